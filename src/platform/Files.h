#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// Renames a file. An existing file is never overwritten: the call then fails and leaves both files alone.
/// \return true if the file now has the new name
bool renameFile(const std::string& from, const std::string& to);

/// Deletes a file; directories are left alone.
/// \return true if the file is gone
bool removeFile(const std::string& path);

} // namespace Platform
} // namespace ZAV
