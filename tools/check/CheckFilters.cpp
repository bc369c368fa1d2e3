#include "check/Checks.h"
#include "config/Appenders.h"
#include "config/LoggerLevels.h"
#include "log/LogException.h"
#include "log/LogMessage.h"
#include "log/config/ConfigurationKeys.h"
#include "zav-util/Conversions.h"

#include <algorithm>
#include <optional>

namespace ZAV {
namespace Tools {

namespace {

namespace Setting = Log::AppenderSetting;

/// \return the loggers that the file names, and those that only a filter prefix names, if these are accepted
std::vector<std::string> loggersFor(const LoggerLevels& levels, const PropertyLine* filters) {
    std::vector<std::string> loggers = levels.named();
    if (filters != nullptr) {
        for (const std::string& prefix : Util::split(filters->value, ' ')) {
            const std::string logger = prefix.back() == '.' ? prefix + "any" : prefix;
            if (isAcceptedLogger(logger)) {
                loggers.push_back(logger);
            }
        }
    }
    return loggers;
}

/// \return the lowest level that a logger lets through to the appender; nothing if it accepts no logger
std::optional<Log::Level::LogLevel> lowestLevel(const Configuration& configuration,
                                                const DeclaredAppender& appender,
                                                const LoggerLevels& levels) {
    const AppenderFilters filters(appender.name, configuration.file().properties());
    std::optional<Log::Level::LogLevel> lowest;
    for (const std::string& logger : loggersFor(levels, configuration.setting(appender, Setting::FILTERS))) {
        // Most severe, so that only the logger's name decides.
        const Log::LogMessage message(logger, Util::TimeUtils::Time::now(), Log::Level::LEVEL_AUDIT, "", 0,
                                      "", Log::LOG);
        if (filters.rejecting(message) == nullptr) {
            const Log::Level::LogLevel level = levels.of(logger);
            lowest = std::min(lowest.value_or(level), level);
        }
    }
    return lowest;
}

void checkLevel(const Configuration& configuration, const DeclaredAppender& appender,
                const PropertyLine& line, const LoggerLevels& levels, Findings& findings) {
    const auto lowest = lowestLevel(configuration, appender, levels);
    if (lowest && Log::Level::fromString(line.value) < *lowest) {
        findings.addWarning(line, "unreachable-level",
                            "no logger that it accepts lets " + line.value +
                                " through, the lowest level is " + Log::Level::toString(*lowest));
    }
}

void checkLevels(const Configuration& configuration, Findings& findings) {
    const LoggerLevels levels(configuration.file().properties());
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const PropertyLine* const level = configuration.setting(appender, Setting::LEVEL);
        const bool isDynamic = configuration.setting(appender, Setting::EXPIRATION) != nullptr;
        if (level == nullptr || isDynamic) {
            continue;
        }
        try {
            checkLevel(configuration, appender, *level, levels, findings);
        } catch (const Log::LogException&) {
            continue; // a setting that the library rejects is a finding of its own
        }
    }
}

bool takes(const std::string& prefix, const std::string& logger) {
    return logger.compare(0, prefix.size(), prefix) == 0;
}

/// \return true if the prefix, read as a logger's name, denotes this logger or one above it
bool means(const std::string& prefix, const std::string& logger) {
    return takes(prefix, logger) &&
           (logger.size() == prefix.size() || prefix.back() == '.' || logger[prefix.size()] == '.');
}

void checkPrefixes(const PropertyLine& filters, const Configuration& configuration, Findings& findings) {
    const std::vector<std::string> prefixes = Util::split(filters.value, ' ');
    for (const auto& [logger, line] : configuration.loggers()) {
        const std::string& name = logger;
        const bool isMeant = std::any_of(prefixes.begin(), prefixes.end(),
                                         [&name](const std::string& prefix) { return means(prefix, name); });
        const auto prefix = std::find_if(prefixes.begin(), prefixes.end(),
                                         [&name](const std::string& p) { return takes(p, name); });
        if (!isMeant && prefix != prefixes.end()) {
            findings.addWarning(later(filters, *line), "prefix-surprise",
                                "the prefix '" + *prefix + "' of '" + filters.key +
                                    "' also takes the logger '" + logger + "', which is not below it");
        }
    }
}

void checkPrefixes(const Configuration& configuration, Findings& findings) {
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const PropertyLine* const filters = configuration.setting(appender, Setting::FILTERS);
        if (filters != nullptr) {
            checkPrefixes(*filters, configuration, findings);
        }
    }
}

} // namespace

void checkFilters(const Configuration& configuration, Findings& findings) {
    checkLevels(configuration, findings);
    checkPrefixes(configuration, findings);
}

} // namespace Tools
} // namespace ZAV
