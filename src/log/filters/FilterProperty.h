#pragma once

#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Reads the key "appender.<appenderName>.<suffix>" that a static filter is made from.
/// \throw LogException if the key is missing
std::string readFilterProperty(const std::string& appenderName, const std::string& suffix,
                               const Util::Properties& properties);

} // namespace Log
} // namespace ZAV
