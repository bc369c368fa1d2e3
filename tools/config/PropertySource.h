#pragma once

#include "zav-util/Properties.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Reads the lines of a property file, without their line ends.
/// \throw Util::UtilException if it cannot be read, is a device, which may be endless, or holds more than 16 MB, also
///         from a pipe
std::vector<std::string> readPropertyLines(const std::string& fileName);

/// Reads a property file as the library would.
/// \throw Util::UtilException as `readPropertyLines` does, and for the first malformed line
Util::Properties readProperties(const std::string& fileName);

} // namespace Tools
} // namespace ZAV
