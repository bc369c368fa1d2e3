#include "log/filters/FilterMessageType.h"

#include "log/LogMessage.h"
#include "log/config/AppenderSettings.h"
#include "log/config/KeyNames.h"

namespace ZAV {
namespace Log {

FilterMessageType::FilterMessageType(const std::string& appenderName, const Util::Properties& properties)
    : messageType_(messageTypeFromString(
          AppenderSettings(appenderName, properties).require(AppenderSetting::MESSAGE_TYPE))) {}

bool FilterMessageType::accept(const LogMessage& message) {
    return message.getType() == messageType_;
}

} // namespace Log
} // namespace ZAV
