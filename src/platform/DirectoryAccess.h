#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// \return true if this process may make files in a directory; nothing is made to find that out
bool isWritableDirectory(const std::string& directory);

} // namespace Platform
} // namespace ZAV
