#pragma once

#include "inputs/LogFile.h"

#include <string>

namespace ZAV {
namespace Tools {

/// Recognises a file packed by anything but gzip from its first bytes: its content is no log until it is
/// unpacked. Pipes are not examined.
/// \param file is open
/// \param problem receives what to do about it
bool isPacked(const LogFile& file, std::string& problem);

} // namespace Tools
} // namespace ZAV
