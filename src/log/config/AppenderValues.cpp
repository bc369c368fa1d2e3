#include "log/config/AppenderValues.h"

#include "log/LogException.h"
#include "log/config/ConfigurationKeys.h"
#include "zav-util/Properties.h"
#include "zav-util/UtilException.h"

namespace ZAV {
namespace Log {

AppenderValues::AppenderValues(const std::string& appenderName, unsigned reader)
    : name(appenderName),
      file(reader == READ_BY_ROLLING_FILE_APPENDER ? appenderName + ".log" : appenderName) {
    for (const ConfigurationKey& key : configurationKeys()) {
        if (key.read != nullptr && key.byDefault.isValue) {
            const std::string text = key.byDefault.text;
            const std::string::size_type blank = text.find(' ');
            const bool hasUnit = blank != std::string::npos;
            key.read(*this, text.substr(0, blank), hasUnit ? text.substr(blank + 1) : std::string());
        }
    }
}

AppenderValues::AppenderValues(const std::string& appenderName, unsigned reader,
                               const Util::Properties& properties)
    : AppenderValues(appenderName, reader) {
    for (const ConfigurationKey& key : configurationKeys()) {
        if ((key.readers & reader) != 0) {
            read(key, properties);
        }
    }
    requireColumns();
}

void AppenderValues::requireColumns() const {
    if (layout == LayoutName::FIELDS && columns.empty()) {
        throw LogException("Wrong value for the " + name + "." + AppenderSetting::FIELDS + " property: ");
    }
}

void AppenderValues::read(const ConfigurationKey& key, const Util::Properties& properties) {
    std::string text;
    std::string needed;
    if (key.read == nullptr || !properties.getProperty(appenderKey(name, key.name), text) ||
        (key.requiredKey != nullptr && !properties.getProperty(appenderKey(name, key.requiredKey), needed))) {
        return;
    }
    try {
        key.read(*this, text, needed);
    } catch (const Util::UtilException& exception) {
        throw LogException("Wrong value for the " + name + "." + key.name + " property: " + exception.what());
    }
}

} // namespace Log
} // namespace ZAV
