#include "platform/FileLock.h"

#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ZAV {
namespace Platform {

FileLock::FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, NONE)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

FileLock::~FileLock() {
    if (handle_ != NONE) {
        close(static_cast<int>(handle_));
    }
}

/// For reading only, so that a file which another user has made serves as well.
FileLock::Result FileLock::acquire(const std::string& path, std::string& problem) {
    if (handle_ != NONE) {
        return HELD;
    }
    const int opened = beyondStandardStreams(
        open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0644));
    if (opened >= 0 && flock(opened, LOCK_EX | LOCK_NB) == 0) {
        handle_ = opened;
        return HELD;
    }
    const int error = errno;
    if (opened >= 0) {
        close(opened);
    }
    problem = std::generic_category().message(error);
    return opened >= 0 && error == EWOULDBLOCK ? HELD_BY_ANOTHER : CANNOT_BE_DECIDED;
}

} // namespace Platform
} // namespace ZAV
