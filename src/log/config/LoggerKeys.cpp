#include "log/config/LoggerKeys.h"

#include "log/config/KeyNames.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace ZAV {
namespace Log {

namespace {

constexpr std::size_t PREFIX_LENGTH = sizeof LOGGER_KEY_PREFIX - 1;

bool beginsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

std::string withoutLastComponent(const std::string& key) {
    return key.substr(0, key.rfind('.'));
}

std::vector<std::string> selectAndOrder(const std::vector<std::string>& keys) {
    std::vector<std::string> ordered;
    std::copy_if(keys.begin(), keys.end(), std::back_inserter(ordered),
                 [](const std::string& key) { return beginsWith(key, LOGGER_KEY_PREFIX); });
    const auto firstOther = std::stable_partition(ordered.begin(), ordered.end(), [](const std::string& key) {
        return beginsWith(key, "logger.root");
    });
    std::sort(firstOther, ordered.end(), [](const std::string& a, const std::string& b) {
        return withoutLastComponent(a) < withoutLastComponent(b);
    });
    return ordered;
}

} // namespace

std::vector<LoggerKey> orderLoggerKeys(const std::vector<std::string>& keys) {
    std::vector<LoggerKey> loggerKeys;
    for (const std::string& key : selectAndOrder(keys)) {
        const std::string rest = key.substr(PREFIX_LENGTH);
        const std::string::size_type dot = rest.rfind('.');
        if (dot != std::string::npos) {
            loggerKeys.push_back({key, rest.substr(0, dot), rest.substr(dot + 1)});
        }
    }
    return loggerKeys;
}

} // namespace Log
} // namespace ZAV
