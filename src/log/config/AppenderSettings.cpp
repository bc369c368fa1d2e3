#include "log/config/AppenderSettings.h"

#include "log/LogException.h"
#include "log/config/KeyNames.h"
#include "log/config/ValueReaders.h"
#include "zav-util/Properties.h"
#include "zav-util/UtilException.h"

namespace ZAV {
namespace Log {

AppenderSettings::AppenderSettings(const std::string& appenderName, const Util::Properties& properties)
    : appenderName_(appenderName), properties_(properties) {}

bool AppenderSettings::has(const std::string& setting) const {
    return properties_.count(appenderKey(appenderName_, setting)) != 0;
}

bool AppenderSettings::get(const std::string& setting, std::string& value) const {
    return properties_.getProperty(appenderKey(appenderName_, setting), value);
}

bool AppenderSettings::getBoolean(const std::string& setting, bool byDefault) const {
    std::string value;
    return get(setting, value) ? readBoolean(value).value_or(byDefault) : byDefault;
}

Util::TimeUtils::Time AppenderSettings::getPeriod(const std::string& setting) const {
    std::string value;
    if (!get(setting, value)) {
        return Util::TimeUtils::Time();
    }
    try {
        return readPeriod(value);
    } catch (const Util::UtilException& exception) {
        throw LogException("Wrong value for the " + appenderName_ + "." + setting +
                           " property: " + exception.what());
    }
}

std::string AppenderSettings::require(const std::string& setting) const {
    std::string value;
    if (!get(setting, value)) {
        throw LogException("Properties does not specify " + setting + " for appender '" + appenderName_ +
                           "'");
    }
    return value;
}

} // namespace Log
} // namespace ZAV
