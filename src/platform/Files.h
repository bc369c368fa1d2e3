#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ZAV {
namespace Platform {

/// Appends all that a file, a pipe or a device gives until its end. No stream is made for it: a forked child
/// can do it under a global locale as well, whose lock another thread may have held.
/// \return false if it cannot be opened or read, as a directory; `text` may then have a part of it
bool readFile(const std::string& path, std::string& text);

/// Renames a file. An existing file is never overwritten: the call then fails and leaves both files alone.
/// \return true if the file now has the new name
bool renameFile(const std::string& from, const std::string& to);

/// Renames a file onto another one, if there is one: at every moment the name leads to one of the two.
/// \return true if the file now has the new name
bool renameOver(const std::string& from, const std::string& to);

/// \return the path, from the root of the file system if it is a relative one: it leads to the same folder, also
///         when the process has gone into another one. An empty path stays, since what is put behind it
///         begins with a "/"; and so does one from a folder that the process could not come back to.
std::string absolutePath(const std::string& folder);

/// What is known of a regular file without opening it.
struct FileStatus {
    std::uint64_t size;                  ///< bytes
    std::optional<unsigned> permissions; ///< none on Windows
};

/// \return nothing if there is no regular file; a symbolic link is none
std::optional<FileStatus> lookAtFile(const std::string& path);

/// \return whether anything stands at the path, also a symbolic link that leads nowhere
bool isTaken(const std::string& path);

/// Deletes a file; directories are left alone.
/// \return true if the file is gone
bool removeFile(const std::string& path);

} // namespace Platform
} // namespace ZAV
