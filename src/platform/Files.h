#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// Renames a file. A name that already exists is never overwritten: the call fails and leaves both files.
/// \return true if the file now has the new name
bool renameFile(const std::string& from, const std::string& to);

/// Deletes a file; directories are left alone.
/// \return true if the file is gone
bool removeFile(const std::string& path);

} // namespace Platform
} // namespace ZAV
