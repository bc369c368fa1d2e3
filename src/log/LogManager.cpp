#include "log/LogManager.h"

#include "log/Appender.h"
#include "log/LogException.h"
#include "log/LoggerFactory.h"
#include "log/appenders/AppenderRegistry.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/commands/CommandBus.h"
#include "log/message/FailureCount.h"
#include "log/reentrancy/PutOffMessages.h"
#include "log/tree/LoggerInside.h"
#include "log/tree/SubtreeLevel.h"
#include "platform/CancellationGuard.h"
#include "zav-util/Properties.h"

#include <utility>

namespace ZAV {
namespace Log {
namespace LogManager {

namespace {

bool initialised = false;

void configure(const Util::Properties& properties) {
    LoggerFactory::initLoggers(properties);
    AsynchronousDispatcher::instance().init(
        properties, [&properties] { AppenderRegistry::instance().initAppenders(properties); });
}

} // namespace

bool init(const Util::Properties& properties) {
    if (initialised) {
        return false;
    }
    try {
        configure(properties);
    } catch (...) {
        finish();
        throw;
    }
    initialised = true;
    return true;
}

bool init(const std::string& fileName) {
    if (fileName.empty()) {
        throw LogException("File name parameter is empty.");
    }
    return init(Util::Properties(fileName));
}

void registerAppenderClass(const std::string& className,
                           std::function<std::unique_ptr<Appender>(const AppenderOptions&)> maker) {
    AppenderRegistry::instance().registerClass(className, std::move(maker));
}

void finish() {
    const Platform::NoCancellation noCancellation; // it must not be left half done
    CommandBus::instance().clearCommandListeners();
    AsynchronousDispatcher::instance().finishConfigured();
    AppenderRegistry::instance().destroyAppenders();
    initialised = false;
}

bool flush(const Util::TimeUtils::Time& timeout) {
    return AsynchronousDispatcher::instance().flush(timeout);
}

LogStatistics statistics() {
    LogStatistics statistics = AsynchronousDispatcher::instance().statistics();
    const std::uint64_t neverQueued = PutOffMessages::instance().discarded();
    statistics.queued += neverQueued;
    statistics.discarded += neverQueued;
    statistics.failed = FailureCount::get();
    return statistics;
}

void addAsynchronousAppender(Appender* appender) {
    AsynchronousDispatcher::instance().registerAsynchronousAppender(appender, isListed);
}

void removeAsynchronousAppender(Appender* appender) {
    AsynchronousDispatcher::instance().unregisterAsynchronousAppender(appender);
}

std::vector<AppenderStatus> appenders() {
    return AppenderRegistry::instance().statuses();
}

void setLevelFor(Logger& logger, Level::LogLevel level, const Util::TimeUtils::Time& duration) {
    SubtreeLevel::setFor(logger, level, duration);
}

void setLevelFor(const std::string& loggerName, Level::LogLevel level,
                 const Util::TimeUtils::Time& duration) {
    Logger& logger =
        loggerName == "root" ? LoggerFactory::getRootLogger() : LoggerFactory::getLogger(loggerName);
    setLevelFor(logger, level, duration);
}

void registerCommandListener(const std::string& name, CommandListener* listener) {
    CommandBus::instance().registerListener(name, listener);
}

void unregisterCommandListener(const std::string& name) {
    CommandBus::instance().unregisterListeners(name);
}

bool hasCommandListener(const std::string& name) {
    return CommandBus::instance().hasListener(name);
}

void command(const std::string& name, const std::string& argument) {
    CommandBus::instance().deliver(name, argument);
}

} // namespace LogManager
} // namespace Log
} // namespace ZAV
