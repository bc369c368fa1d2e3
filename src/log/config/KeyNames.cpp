#include "log/config/KeyNames.h"

namespace ZAV {
namespace Log {

std::string appenderKey(const std::string& appenderName) {
    return APPENDER_KEY_PREFIX + appenderName;
}

std::string appenderKey(const std::string& appenderName, const std::string& setting) {
    return appenderKey(appenderName) + "." + setting;
}

std::string dispatcherKey(const std::string& option) {
    return DISPATCHER_KEY_PREFIX + option;
}

} // namespace Log
} // namespace ZAV
