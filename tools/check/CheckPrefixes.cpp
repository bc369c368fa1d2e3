#include "check/Checks.h"
#include "log/config/ConfigurationKeys.h"
#include "zav-util/Conversions.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

bool takes(const std::string& prefix, const std::string& logger) {
    return logger.compare(0, prefix.size(), prefix) == 0;
}

/// \return true if the prefix, read as a logger's name, denotes this logger or one above it
bool means(const std::string& prefix, const std::string& logger) {
    return takes(prefix, logger) &&
           (logger.size() == prefix.size() || prefix.back() == '.' || logger[prefix.size()] == '.');
}

void checkFilters(const PropertyLine& filters, const Configuration& configuration, Findings& findings) {
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

} // namespace

void checkPrefixes(const Configuration& configuration, Findings& findings) {
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const PropertyLine* const filters = configuration.setting(appender, Log::AppenderSetting::FILTERS);
        if (filters != nullptr) {
            checkFilters(*filters, configuration, findings);
        }
    }
}

} // namespace Tools
} // namespace ZAV
