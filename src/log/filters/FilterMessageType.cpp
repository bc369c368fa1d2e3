#include "log/filters/FilterMessageType.h"

#include "log/LogMessage.h"
#include "log/filters/FilterProperty.h"

namespace ZAV {
namespace Log {

FilterMessageType::FilterMessageType(const std::string& appenderName, const Util::Properties& properties)
    : messageType_(messageTypeFromString(readFilterProperty(appenderName, "message_type", properties))) {}

bool FilterMessageType::accept(const LogMessage& message) {
    return message.getType() == messageType_;
}

} // namespace Log
} // namespace ZAV
