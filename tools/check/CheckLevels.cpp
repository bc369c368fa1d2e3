#include "check/Checks.h"
#include "config/AppenderFilters.h"
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

} // namespace

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

} // namespace Tools
} // namespace ZAV
