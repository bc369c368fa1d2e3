#include "log/filters/FilterProperty.h"

#include "log/LogException.h"
#include "zav-util/Properties.h"

namespace ZAV {
namespace Log {

std::string readFilterProperty(const std::string& appenderName, const std::string& suffix,
                               const Util::Properties& properties) {
    std::string value;
    if (!properties.getProperty("appender." + appenderName + "." + suffix, value)) {
        throw LogException("Properties does not specify " + suffix + " for appender '" + appenderName + "'");
    }
    return value;
}

} // namespace Log
} // namespace ZAV
