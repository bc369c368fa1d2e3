#include "log/config/KeyNames.h"

#include "zav-util/Conversions.h"

#include <vector>

namespace ZAV {
namespace Log {

std::optional<std::string> declaredAppender(const std::string& key) {
    const std::vector<std::string> tokens = Util::split(key, '.');
    const bool declaresAppender = tokens.size() == 2 && tokens[0] == "appender";
    return declaresAppender ? std::optional<std::string>(tokens[1]) : std::nullopt;
}

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
