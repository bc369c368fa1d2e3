#pragma once

#include <cstdint>
#include <string>

namespace ZAV {
namespace Platform {

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

} // namespace Platform
} // namespace ZAV
