#pragma once

#include <string>
#include <vector>

namespace ZAV {
namespace Platform {

/// Lists the entries of a directory that are not directories themselves.
/// \param directory path of the directory; the root if it is empty, as in the path of an entry
/// \param names receives the names, without the directory, in no fixed order; untouched on failure
/// \return false if the directory cannot be listed, for example because it does not exist
bool listFiles(const std::string& directory, std::vector<std::string>& names);

} // namespace Platform
} // namespace ZAV
