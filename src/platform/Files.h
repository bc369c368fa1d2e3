#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

// The two steps in which a file gets a new content as a whole: at every moment, also after a crash of the
// process or of the machine, its path leads to the old content or to the new one.

/// Puts the new content on the disk, in a file PATH.new, and waits for that.
/// \param path of a file that may not exist yet
/// \param problem receives the system's word for what went wrong
/// \return false if that is not possible; nothing is left behind then
bool writeReplacement(const std::string& path, const std::string& content, std::string& problem);

/// Puts it into the place of the old one, which takes no time.
/// \copydetails writeReplacement
bool replaceFile(const std::string& path, std::string& problem);

/// A file that stands for the right to something which only one process may have at a time. The system gives
/// the right back when the process ends, however it ends; the file stays.
class FileLock {
public:
    enum Result {
        HELD,             ///< by this object
        HELD_BY_ANOTHER,  ///< by another process, or by another object of this one
        CANNOT_BE_DECIDED ///< the file cannot be opened, or its file system knows no locks
    };

    FileLock() noexcept = default;
    ~FileLock();
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Tries to get the right, and does not wait for it; no effect if it is held already.
    /// \param path of the file, which is made if it does not exist
    /// \param problem receives the system's word if the result is `CANNOT_BE_DECIDED`
    Result acquire(const std::string& path, std::string& problem);

private:
    static constexpr std::intptr_t NONE = -1;

    std::intptr_t handle_ = NONE;
};

/// Lists the entries of a directory that are not directories themselves.
/// \param directory path of the directory; the root if it is empty, as in the path of an entry
/// \param names receives the names, without the directory, in no fixed order; untouched on failure
/// \return false if the directory cannot be listed, for example because it does not exist
bool listFiles(const std::string& directory, std::vector<std::string>& names);

/// \return true if this process may make files in a directory; nothing is made to find that out
bool isWritableDirectory(const std::string& directory);

/// \param problem receives the system's word for why not
/// \return true if this process may see which files are in a directory, and come to them
bool isReadableDirectory(const std::string& directory, std::string& problem);

} // namespace Platform
} // namespace ZAV
