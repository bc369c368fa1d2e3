#include "log/config/KeyNames.h"

#include "log/config/ConfigurationKeys.h"
#include "zav-util/Conversions.h"

#include <algorithm>
#include <cctype>
#include <iterator>
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

namespace {

/// The library's own classes of appenders.
constexpr struct {
    const char* name;
    unsigned reader;
} CLASSES[] = {
    {AppenderClass::STDOUT, READ_BY_STDOUT_APPENDER},
    {AppenderClass::FILE_SERIES, READ_BY_FILE_APPENDER},
    {AppenderClass::SINGLE_FILE, READ_BY_SIMPLE_FILE_APPENDER},
    {AppenderClass::ROLLED_FILE, READ_BY_ROLLING_FILE_APPENDER},
};

} // namespace

const ConfigurationKey* findKey(KeySection section, const std::string& name) {
    const ConfigurationKeys keys = configurationKeys();
    const auto* const found = std::find_if(keys.begin(), keys.end(), [&](const ConfigurationKey& key) {
        return key.section == section && key.name == name;
    });
    return found == keys.end() ? nullptr : found;
}

unsigned readerOfClass(const std::string& className) {
    const auto* const found =
        std::find_if(std::begin(CLASSES), std::end(CLASSES),
                     [&className](const auto& known) { return known.name == className; });
    return found == std::end(CLASSES) ? 0U : found->reader;
}

std::string genericKey(const ConfigurationKey& key) {
    const std::string name = key.name;
    if (key.section == KeySection::LOGGER) {
        return std::string(LOGGER_KEY_PREFIX) + "L." + name;
    }
    if (key.section == KeySection::DISPATCHER) {
        return dispatcherKey(name);
    }
    return name.empty() ? appenderKey("A") : appenderKey("A", name);
}

std::string describeReaders(const ConfigurationKey& key) {
    switch (key.readers) {
    case READ_BY_LOGGERS:
        return "the loggers";
    case READ_BY_DISPATCHER:
        return "the dispatcher";
    case READ_BY_APPENDERS:
        return "all appenders";
    default:
        break;
    }
    std::string readers;
    for (const auto& known : CLASSES) {
        if ((key.readers & known.reader) != 0) {
            readers += (readers.empty() ? "`" : ", `") + std::string(known.name) + "`";
        }
    }
    return readers;
}

/// Numbers are shown as they are, other values as code.
std::string describeDefault(const ConfigurationKey& key) {
    const std::string text = key.byDefault.text;
    const bool isWord = key.byDefault.isValue && std::isdigit(static_cast<unsigned char>(text.front())) == 0;
    return isWord ? "`" + text + "`" : text;
}

} // namespace Log
} // namespace ZAV
