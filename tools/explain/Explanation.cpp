#include "explain/Explanation.h"

#include "Outcome.h"
#include "config/InitTrial.h"
#include "config/PropertyFile.h"
#include "explain/RunningLevels.h"
#include "log/LogManager.h"
#include "log/config/ConfigurationKeys.h"
#include "log/filters/MessageFilters.h"

#include <exception>

namespace ZAV {
namespace Tools {

using Log::Level::LogLevel;

ExplainedAppender::ExplainedAppender(const std::string& name, const Util::Properties& properties)
    : name_(name), properties_(properties), filters_(name, properties), place_(name, properties) {}

std::string ExplainedAppender::refusal(const Log::LogMessage& message) const {
    Log::MessageFilter* const filter = filters_.rejecting(message);
    if (filter == nullptr) {
        return std::string();
    }
    if (dynamic_cast<Log::FilterLogger*>(filter) != nullptr) {
        return "its filters are " + setting(Log::AppenderSetting::FILTERS);
    }
    if (dynamic_cast<Log::FilterMessageType*>(filter) != nullptr) {
        return "its message_type is " + setting(Log::AppenderSetting::MESSAGE_TYPE);
    }
    return "its level is " + setting(Log::AppenderSetting::LEVEL);
}

std::string ExplainedAppender::layout() const {
    const auto entry = properties_.find(Log::appenderKey(name_, Log::AppenderSetting::LAYOUT));
    return entry == properties_.end() ? std::string() : entry->second;
}

std::string ExplainedAppender::setting(const std::string& setting) const {
    return properties_.at(Log::appenderKey(name_, setting));
}

namespace {

/// \return the levels that messages of a type may have, the lowest first
std::vector<LogLevel> levelsOf(Log::MessageType type) {
    using namespace Log::Level;
    if (type == Log::CFG) {
        return {LEVEL_AUDIT};
    }
    return {LEVEL_TRACE, LEVEL_DEBUG, LEVEL_INFO, LEVEL_WARNING, LEVEL_ERROR, LEVEL_AUDIT};
}

/// The library's reports on single keys go to standard error, as they do in a program.
Util::Properties readAndTry(const std::string& fileName) {
    try {
        Util::Properties properties = readProperties(fileName);
        Log::LogManager::init(withoutFolders(properties));
        Log::LogManager::finish();
        return properties;
    } catch (const std::exception& exception) {
        throw Failure(exception.what());
    }
}

} // namespace

Explanation::Explanation(const std::string& fileName, Log::MessageType type, const std::string& address)
    : type_(type), properties_(readAndTry(fileName)), levels_(properties_) {
    if (!address.empty()) {
        takeLevelsFrom(address);
    }
    for (const std::string& key : properties_.getKeys()) {
        if (const std::optional<std::string> name = Log::declaredAppender(key)) {
            appenders_.emplace_back(*name, properties_);
        }
    }
}

void Explanation::takeLevelsFrom(const std::string& address) {
    const RunningLevels running(address);
    running.applyTo(properties_);
    running.applyToLoggers();
}

std::vector<Route> Explanation::routesOf(const std::string& logger) const {
    std::vector<Route> routes;
    for (const ExplainedAppender& appender : appenders_) {
        routes.push_back(routeOf(logger, appender));
    }
    return routes;
}

/// The reason is that of the highest level that is not written, so it names the next obstacle.
Route Explanation::routeOf(const std::string& logger, const ExplainedAppender& appender) const {
    Route route{appender.name(), appender.place(), appender.layout(), std::nullopt, std::string()};
    for (const LogLevel level : levelsOf(type_)) {
        const std::string problem = refusal(appender, logger, level);
        if (problem.empty()) {
            route.lowest = level;
            break;
        }
        const std::string stop = stopOf(logger, level);
        route.reason = stop.empty() ? problem : "the logger stops what is less severe, " + stop;
    }
    return route;
}

std::string Explanation::stopOf(const std::string& logger, LogLevel level) const {
    const LogLevel lowest = levels_.of(logger);
    const bool passes = type_ == Log::CFG || level >= lowest;
    return passes ? std::string() : "its level is " + Log::Level::toString(lowest);
}

std::vector<Delivery> Explanation::deliveriesOf(const std::string& logger, LogLevel level) const {
    std::vector<Delivery> deliveries;
    for (const ExplainedAppender& appender : appenders_) {
        deliveries.push_back({appender.name(), appender.place(), refusal(appender, logger, level)});
    }
    return deliveries;
}

std::string Explanation::refusal(const ExplainedAppender& appender, const std::string& logger,
                                 LogLevel level) const {
    const std::string stop = stopOf(logger, level);
    return stop.empty() ? appender.refusal(makeMessage(logger, level)) : "the logger stops it, " + stop;
}

/// A configuration message always has the most severe level.
Log::LogMessage Explanation::makeMessage(const std::string& logger, LogLevel level) const {
    const LogLevel real = type_ == Log::CFG ? Log::Level::LEVEL_AUDIT : level;
    return Log::LogMessage(logger, Util::TimeUtils::Time::now(), real, "", 0, "", type_);
}

} // namespace Tools
} // namespace ZAV
