#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// \return true if this process may make files in a directory; nothing is made to find that out
bool isWritableDirectory(const std::string& directory);

/// \param problem receives the system's word for why not
/// \return true if this process may see which files are in a directory, and come to them
bool isReadableDirectory(const std::string& directory, std::string& problem);

} // namespace Platform
} // namespace ZAV
