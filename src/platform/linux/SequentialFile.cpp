#include "platform/SequentialFile.h"

#include "platform/Threads.h"
#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ZAV {
namespace Platform {

bool SequentialFile::open(const std::string& path, std::string& problem) {
    const NoCancellation guard;
    const int opened = beyondStandardStreams(
        ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (opened >= 0 && fstat(opened, &status) == 0 && S_ISREG(status.st_mode)) {
        handle_ = opened;
        return true;
    }
    problem = opened < 0 ? std::generic_category().message(errno) : "Not a regular file";
    if (opened >= 0) {
        ::close(opened);
    }
    return false;
}

bool SequentialFile::reserve() noexcept {
    return flock(static_cast<int>(handle_), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

std::int64_t SequentialFile::read(char* buffer, std::size_t size, std::string& problem) {
    const NoCancellation guard;
    ssize_t count = 0;
    do {
        count = ::read(static_cast<int>(handle_), buffer, size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        problem = std::generic_category().message(errno);
    }
    return count;
}

void SequentialFile::close() noexcept {
    if (handle_ != NONE) {
        const NoCancellation guard;
        ::close(static_cast<int>(std::exchange(handle_, NONE)));
    }
}

} // namespace Platform
} // namespace ZAV
