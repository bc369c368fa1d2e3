#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Platform {

/// Appends the whole content of a file, a pipe or a device. On Linux it uses no stream, so a forked child may
/// call it even if another thread held the global locale's lock during the fork.
/// \return false if it cannot be opened or read (a directory, for example); `text` may then hold part of the content
bool readFile(const std::string& path, std::string& text);

/// Renames a file. An existing file is never overwritten: the call then fails and leaves both files alone.
/// \return true if the file now has the new name
bool renameFile(const std::string& from, const std::string& to);

/// Renames a file, replacing an existing one atomically.
/// \return true if the file now has the new name
bool renameOver(const std::string& from, const std::string& to);

/// \return the absolute form of the path, which stays valid when the process changes its working directory. An empty
///         path is returned unchanged, since callers append "/..."; so is a relative one if the current
///         directory cannot be reached by its path.
std::string absolutePath(const std::string& folder);

/// Status of a regular file, read without opening it.
struct FileStatus {
    std::uint64_t size;                  ///< bytes
    std::optional<unsigned> permissions; ///< none on Windows
};

/// \return nothing if the path is not a regular file; symbolic links are not followed
std::optional<FileStatus> statFile(const std::string& path);

/// \return whether the path exists, even as a dangling symbolic link
bool isTaken(const std::string& path);

/// Deletes a file; directories are left alone.
/// \return true if the file is gone
bool removeFile(const std::string& path);

// The two steps of replacing a file's content atomically: at any moment, even after a crash of the process or
// the machine, the path has either the old content or the new.

/// Writes the new content to PATH.new and waits until it is on disk.
/// \param path of the file to replace, which need not exist
/// \param problem receives the system's error text
/// \return false on failure; PATH.new is then removed
bool writeReplacement(const std::string& path, const std::string& content, std::string& problem);

/// Renames PATH.new to PATH.
/// \copydetails writeReplacement
bool replaceFile(const std::string& path, std::string& problem);

/// An inter-process lock on a file. The system releases it when the process ends, however it ends; the file
/// stays.
class FileLock {
public:
    enum Result {
        HELD,             ///< by this object
        HELD_BY_ANOTHER,  ///< by another process, or by another object of this one
        CANNOT_BE_DECIDED ///< the file cannot be opened, or its file system has no locks
    };

    FileLock() noexcept = default;
    ~FileLock();
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Tries to acquire the lock without waiting; no effect if it is held already.
    /// \param path of the file, which is created if it does not exist
    /// \param problem receives the system's error text if the result is `CANNOT_BE_DECIDED`
    Result acquire(const std::string& path, std::string& problem);

private:
    static constexpr std::intptr_t NONE = -1;

    std::intptr_t handle_ = NONE;
};

/// Lists the entries of a directory that are not directories themselves.
/// \param directory path of the directory; empty means the root, since an entry's path is the directory's followed by
///        "/..."
/// \param names receives the names, without the directory, in no fixed order; untouched on failure
/// \return false if the directory cannot be listed, for example because it does not exist
bool listFiles(const std::string& directory, std::vector<std::string>& names);

/// \return true if this process may create files in a directory; checked without creating one
bool isWritableDirectory(const std::string& directory);

/// \param problem receives the system's error text if not
/// \return true if this process may list a directory and access its entries
bool isReadableDirectory(const std::string& directory, std::string& problem);

} // namespace Platform
} // namespace ZAV
