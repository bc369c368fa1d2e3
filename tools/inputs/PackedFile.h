#pragma once

#include "inputs/LogFile.h"

#include <string>

namespace ZAV {
namespace Tools {

/// Tells a file that a packer other than gzip has made, by its first bytes: its content is no log until it is
/// unpacked. A pipe is not looked at.
/// \param file is open
/// \param problem receives what to do about it
bool isPacked(const LogFile& file, std::string& problem);

} // namespace Tools
} // namespace ZAV
