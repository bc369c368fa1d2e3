#include "platform/OpenFiles.h"

#include "platform/Terminal.h"
#include "platform/Threads.h"
#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
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

/// \return why it cannot be read as a file; empty if it can
std::string reasonNotReadable(const struct stat& status) {
    if (S_ISREG(status.st_mode)) {
        return "";
    }
    return S_ISDIR(status.st_mode) ? describe(EISDIR) : "Not a regular file";
}

/// A process that catches stop signals must not block on a pipe. The pipe itself is not made non-blocking,
/// since other processes share it.
bool wouldWait(int number) {
    pollfd input = {number, POLLIN, 0};
    return catchesStopSignals() && poll(&input, 1, 0) == 0;
}

/// \return the current offset of an open file; 0 for a pipe
std::uint64_t positionOf(int number) {
    const off_t place = lseek(number, 0, SEEK_CUR);
    return place < 0 ? 0 : static_cast<std::uint64_t>(place);
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

InputFile::InputFile(InputFile&& other) noexcept
    : handle_(std::exchange(other.handle_, NONE)), position_(other.position_), hasEnded_(other.hasEnded_) {}

InputFile& InputFile::operator=(InputFile&& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(position_, other.position_);
    std::swap(hasEnded_, other.hasEnded_);
    return *this;
}

/// Checks the type before opening, since opening a pipe would unblock its writer, and again afterwards.
bool InputFile::open(const std::string& path, std::string& problem, Links links) {
    close();
    position_ = 0;
    struct stat status;
    if (stat(path.c_str(), &status) == 0 && !(problem = reasonNotReadable(status)).empty()) {
        return false;
    }
    const int noLink = links == Links::REFUSED ? O_NOFOLLOW : 0;
    const int opened =
        moveAboveStandardStreams(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | noLink));
    if (opened < 0) {
        problem = describe(errno);
        return false;
    }
    handle_ = opened;
    problem = fstat(opened, &status) == 0 ? reasonNotReadable(status) : describe(errno);
    if (!problem.empty()) {
        close();
    }
    return isOpen();
}

bool InputFile::openStandardInput(std::string& problem) {
    close();
    handle_ = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    struct stat status;
    if (!isOpen() || fstat(descriptor(handle_), &status) != 0) {
        problem = describe(errno);
        close();
    } else if (S_ISDIR(status.st_mode)) {
        problem = describe(EISDIR);
        close();
    } else {
        position_ = positionOf(descriptor(handle_));
    }
    return isOpen();
}

InputFile InputFile::duplicate() const {
    InputFile copy;
    copy.position_ = position_;
    copy.handle_ = fcntl(descriptor(handle_), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    return copy;
}

std::int64_t InputFile::readAt(std::uint64_t offset, char* buffer, std::size_t size,
                               std::string& problem) const {
    for (;;) {
        ssize_t count = pread(descriptor(handle_), buffer, size, static_cast<off_t>(offset));
        if (count < 0 && errno == ESPIPE) {
            if (wouldWait(descriptor(handle_))) {
                return 0;
            }
            count = read(descriptor(handle_), buffer, size);
            hasEnded_ = hasEnded_ || (count == 0 && size > 0);
        }
        if (count >= 0) {
            return count;
        }
        if (errno == EAGAIN) {
            return 0; // nothing to read for now
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

bool SequentialFile::open(const std::string& path, std::string& problem) {
    const NoCancellation guard;
    const int opened = moveAboveStandardStreams(
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
