#include "log/filters/FilterLogLevel.h"

#include "log/LogMessage.h"
#include "log/filters/FilterProperty.h"

namespace ZAV {
namespace Log {

FilterLogLevel::FilterLogLevel(const std::string& appenderName, const Util::Properties& properties)
    : level_(Level::fromString(readFilterProperty(appenderName, "level", properties))) {}

bool FilterLogLevel::accept(const LogMessage& message) {
    return level_ <= message.getLevel();
}

} // namespace Log
} // namespace ZAV
