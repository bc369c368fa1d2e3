#include "control/RequestHandler.h"

#include "log/LogException.h"
#include "log/LogManager.h"
#include "log/LogStatistics.h"
#include "log/LoggerFactory.h"
#include "platform/Process.h"
#include "platform/Threads.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <exception>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace ZAV {
namespace Log {

namespace {

using Util::TimeUtils::Time;

constexpr std::string_view REFUSED = "error: ";

bool hasEmptyComponent(const std::string& name) {
    return name.empty() || name.front() == '.' || name.back() == '.' || name.find("..") != std::string::npos;
}

bool isListed(const std::string& name) {
    const std::vector<std::string> names = LoggerFactory::getLoggerNames();
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// \return null if there is none; never creates one
Logger* findLogger(const std::string& name) {
    if (name == "root") {
        return &LoggerFactory::getRootLogger();
    }
    // The factory would not look up a name with an empty component, but create it.
    if (hasEmptyComponent(name)) {
        return name.find('/') == std::string::npos && isListed(name) ? &LoggerFactory::getLogger(name)
                                                                     : nullptr;
    }
    // A "/" in the parent's name would be taken as a path, and yield a different logger.
    const std::string::size_type dot = name.rfind('.');
    if (dot != std::string::npos && LoggerFactory::loggerExists(name.substr(0, dot), name.substr(dot + 1))) {
        return &LoggerFactory::getLogger(name.substr(0, dot), name.substr(dot + 1));
    }
    return LoggerFactory::loggerExists(name) ? &LoggerFactory::getLogger(name) : nullptr;
}

Logger& existingLogger(const std::string& name) {
    Logger* const logger = findLogger(name);
    if (logger == nullptr) {
        throw LogException("There is no logger '" + name + "'.");
    }
    return *logger;
}

Time toMinutes(const std::string& text) {
    std::int32_t minutes = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, minutes);
    if (result.ec != std::errc() || result.ptr != end) {
        throw LogException("Can't convert " + text + " to integer");
    }
    if (minutes < 0) {
        throw LogException("The minutes of an expiration cannot be negative; 0 is for ever.");
    }
    return Time(static_cast<std::uint64_t>(minutes), Util::TimeUtils::MIN);
}

/// Fractions of a minute are rounded up to a thousandth, since 0 means forever.
std::string minutesText(Time duration) {
    const std::uint64_t microsecondsPerThousandth = 60000;
    const std::uint64_t thousandths = duration.microseconds() / microsecondsPerThousandth +
                                      (duration.microseconds() % microsecondsPerThousandth == 0 ? 0 : 1);
    std::string text = std::to_string(thousandths / 1000);
    if (thousandths % 1000 != 0) {
        text += "." + std::to_string(1000 + thousandths % 1000).substr(1);
        text.erase(text.find_last_not_of('0') + 1);
    }
    return text;
}

std::string describe(const Logger& logger) {
    return toPrintable(logger.getName()) + " " + Level::toString(logger.getLevel()) + " " +
           minutesText(logger.getExpirationTime()) + "\n";
}

/// \param name of an existing logger, so the whole tree need not be searched
/// \return null if the factory would take the name for another logger's
Logger* findListed(const std::string& name) {
    if (!hasEmptyComponent(name)) {
        return findLogger(name);
    }
    return name.find('/') == std::string::npos ? &LoggerFactory::getLogger(name) : nullptr;
}

/// Lists only loggers that can be addressed: one with a "/" and no parent cannot.
std::string describeLoggers() {
    std::string lines = describe(LoggerFactory::getRootLogger());
    for (const std::string& name : LoggerFactory::getLoggerNames()) {
        const Logger* const logger = findListed(name);
        if (logger != nullptr && logger->getName() == name) {
            lines += describe(*logger);
        }
    }
    return lines;
}

/// \return the seconds until a moment, rounded up; "-" if there is no such moment
std::string secondsUntil(Time end, Time now) {
    const bool isNever = end == Time(std::numeric_limits<std::uint64_t>::max(), Util::TimeUtils::USEC);
    if (end == Time() || isNever) {
        return "-";
    }
    const std::uint64_t left = end > now ? end.microseconds() - now.microseconds() : 0;
    const std::uint64_t perSecond = 1000000;
    return std::to_string(left / perSecond + (left % perSecond == 0 ? 0 : 1));
}

/// An answer that begins with "error:" would be taken for a refusal. The list of loggers is safe: it begins
/// with the root.
std::string appenderName(const std::string& name) {
    const bool looksRefused = name.compare(0, 6, "error:") == 0;
    return looksRefused ? "\\x65" + toPrintable(name.substr(1)) : toPrintable(name);
}

std::string describeAppenders() {
    std::string lines;
    const Time now = Time::now();
    for (const AppenderStatus& appender : LogManager::appenders()) {
        lines += appenderName(appender.name) + " " + toPrintable(appender.className) +
                 (appender.synchronous ? " sync " : " async ") +
                 (appender.hasLevel ? Level::toString(appender.level) : "-") + " " +
                 secondsUntil(appender.until, now) + "\n";
    }
    return lines;
}

/// \return a note if nobody listens to the command
std::string issue(const std::string& command, const std::string& argument) {
    const bool isHeard = LogManager::hasCommandListener(command);
    LogManager::command(command, argument);
    return isHeard ? std::string() : "nobody listens to '" + toPrintable(command) + "'\n";
}

std::string describeStatistics() {
    const LogStatistics statistics = LogManager::statistics();
    return "queued " + std::to_string(statistics.queued) + "\ndelivered " +
           std::to_string(statistics.delivered) + "\ndiscarded " + std::to_string(statistics.discarded) +
           "\nfailed " + std::to_string(statistics.failed) + "\nwaiting " +
           std::to_string(statistics.waiting) + "\nrecovered " + std::to_string(statistics.recovered) + "\n";
}

/// \return the answer without its last line
std::string carryOut(const ControlRequest& request) {
    switch (request.kind()) {
    case ControlRequest::LOGGERS:
        return describeLoggers();
    case ControlRequest::APPENDERS:
        return describeAppenders();
    case ControlRequest::LEVEL_FOR:
        LogManager::setLevelFor(existingLogger(request.name()), Level::fromString(request.value()),
                                request.duration());
        break;
    case ControlRequest::LEVEL:
        existingLogger(request.name()).setLevel(Level::fromString(request.value()), true);
        break;
    case ControlRequest::EXPIRATION:
        existingLogger(request.name()).setExpirationTime(toMinutes(request.value()));
        break;
    case ControlRequest::COMMAND:
        return issue(request.name(), request.value());
    case ControlRequest::STATISTICS:
        return describeStatistics();
    case ControlRequest::RELOAD:
        request.name().empty() ? LogManager::reload() : LogManager::reload(request.name());
        break;
    case ControlRequest::FLUSH:
        throw std::logic_error("A flush is served by the loop.");
    }
    return std::string();
}

} // namespace

std::string RequestHandler::answerTo(const ControlRequest& request) {
    try {
        return carryOut(request) + done();
    } catch (const std::exception& exception) {
        return refused(exception.what());
    } catch (...) {
        return refused("A listener failed.");
    }
}

std::string RequestHandler::done() {
    return "ok\n";
}

std::string RequestHandler::refused(const std::string& reason) {
    return std::string(REFUSED) + toPrintable(reason) + "\n";
}

bool RequestHandler::isRefusal(const std::string& answer) {
    return answer.compare(0, REFUSED.size(), REFUSED) == 0;
}

/// The thread shares ownership of the object, since the server may end first.
void ReloadCall::start() {
    Platform::keepLibraryLoaded();
    const Platform::NoSignals noSignals;
    std::thread([call = shared_from_this()] {
        Platform::markAsServing();
        call->answer_ = RequestHandler::answerTo(call->request_);
        call->isOver_.store(true, std::memory_order_release);
    }).detach();
}

} // namespace Log
} // namespace ZAV
