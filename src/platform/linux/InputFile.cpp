#include "platform/InputFile.h"

#include "platform/linux/StopDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ZAV {
namespace Platform {

namespace {

FileIdentity identityOf(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

std::string describe(int error) {
    return std::generic_category().message(error);
}

int descriptor(std::intptr_t handle) {
    return static_cast<int>(handle);
}

} // namespace

bool identifyFile(const std::string& path, FileIdentity& identity) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        return false;
    }
    identity = identityOf(status);
    return true;
}

InputFile::InputFile(InputFile&& other) noexcept : handle_(std::exchange(other.handle_, NONE)) {}

InputFile& InputFile::operator=(InputFile&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

bool InputFile::open(const std::string& path, std::string& problem) {
    close();
    // Whoever is to end on request must not wait for the other side of a pipe.
    const int waits = stopDescriptor() < 0 ? 0 : O_NONBLOCK;
    const int opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | waits);
    if (opened < 0) {
        problem = describe(errno);
        return false;
    }
    handle_ = opened;
    struct stat status;
    if (fstat(opened, &status) == 0 && S_ISDIR(status.st_mode)) {
        problem = describe(EISDIR);
        close();
        return false;
    }
    return true;
}

InputFile InputFile::duplicate() const {
    InputFile copy;
    copy.handle_ = fcntl(descriptor(handle_), F_DUPFD_CLOEXEC, 0);
    return copy;
}

std::int64_t InputFile::readAt(std::uint64_t offset, char* buffer, std::size_t size,
                               std::string& problem) const {
    for (;;) {
        ssize_t count = pread(descriptor(handle_), buffer, size, static_cast<off_t>(offset));
        if (count < 0 && errno == ESPIPE) {
            count = read(descriptor(handle_), buffer, size);
        }
        if (count >= 0) {
            return count;
        }
        if (errno == EAGAIN) {
            return 0; // for now
        }
        if (errno != EINTR) {
            problem = describe(errno);
            return -1;
        }
    }
}

bool InputFile::isSeekable() const {
    return lseek(descriptor(handle_), 0, SEEK_CUR) >= 0;
}

std::uint64_t InputFile::size() const {
    struct stat status;
    return fstat(descriptor(handle_), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

FileIdentity InputFile::identity() const {
    struct stat status;
    return fstat(descriptor(handle_), &status) == 0 ? identityOf(status) : FileIdentity{};
}

void InputFile::close() noexcept {
    if (isOpen()) {
        ::close(descriptor(std::exchange(handle_, NONE)));
    }
}

} // namespace Platform
} // namespace ZAV
