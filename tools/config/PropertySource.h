#pragma once

#include "zav-util/Properties.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Reads the lines of a file that an application may read its configuration from, without their ends.
/// \throw Util::UtilException if it cannot be read, for a device, which may have no end, and for more than 16 MB,
///        also from a pipe
std::vector<std::string> readPropertyLines(const std::string& fileName);

/// The same, as the library would read the file.
/// \throw Util::UtilException as well for the first line that breaks the format
Util::Properties readProperties(const std::string& fileName);

} // namespace Tools
} // namespace ZAV
