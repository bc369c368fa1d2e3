#pragma once

#include <string>

namespace ZAV {
namespace Tools {

/// Looks whether a file can be one that an application reads its configuration from, before anybody reads it
/// whole. One that is missing is left to whoever reads it.
/// \throw Util::UtilException for a device, which may have no end, and for more than 16 MB
void requirePropertySource(const std::string& fileName);

} // namespace Tools
} // namespace ZAV
