#include "log/config/LoggerKeys.h"

#include "log/LogException.h"
#include "log/config/ConfigurationKeys.h"
#include "zav-util/Conversions.h"
#include "zav-util/Properties.h"
#include "zav-util/StandardError.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <new>
#include <string>

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

Util::TimeUtils::Time toMinutes(const std::string& value) {
    const std::int64_t minutes = Util::toInteger(value);
    return Util::TimeUtils::Time(static_cast<std::uint64_t>(minutes), Util::TimeUtils::MIN);
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

LoggerValue readLoggerValue(const LoggerKey& key, const Util::Properties& properties) {
    std::string text;
    properties.getProperty(key.key, text);
    LoggerValue value;
    if (key.attribute == LoggerAttribute::LEVEL) {
        value.level = Level::fromString(text);
    } else if (key.attribute == LoggerAttribute::EXPIRATION) {
        value.expiration = toMinutes(text);
    }
    return value;
}

void forEachLoggerKey(const Util::Properties& properties, const std::function<void(const LoggerKey&)>& use) {
    for (const LoggerKey& key : orderLoggerKeys(properties.getKeys())) {
        try {
            use(key);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& exception) {
            Util::writeErrorLine("Exception parsing property " + key.key + ": " + exception.what());
        }
    }
}

void checkName(std::string_view path) {
    constexpr std::ptrdiff_t MAX_COMPONENTS = 1000;
    const std::ptrdiff_t components = std::count(path.begin(), path.end(), '.') + 1;
    if (components > MAX_COMPONENTS) {
        throw LogException("Logger name has too many components: " + std::to_string(components));
    }
}

} // namespace Log
} // namespace ZAV
