#include "log/filters/FilterLogger.h"

#include "log/LogMessage.h"
#include "log/config/AppenderSettings.h"
#include "log/config/KeyNames.h"
#include "zav-util/StringUtils.h"

#include <algorithm>

namespace ZAV {
namespace Log {

FilterLogger::FilterLogger(const std::string& appenderName, const Util::Properties& properties)
    : loggerNames_(
          Util::split(AppenderSettings(appenderName, properties).require(AppenderSetting::FILTERS), ' ')) {}

bool FilterLogger::accept(const LogMessage& message) {
    return std::any_of(loggerNames_.begin(), loggerNames_.end(), [&message](const std::string& prefix) {
        return message.getLoggerName().compare(0, prefix.size(), prefix) == 0;
    });
}

} // namespace Log
} // namespace ZAV
