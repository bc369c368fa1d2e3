#pragma once

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace ZAV {
namespace Platform {

/// A program that has closed a standard stream must not get a file of the library's in its place: what it or
/// a standard stream's appender writes there would go into that file.
/// \param number what the system has opened, or -1
/// \return the same, or in the place of a standard stream another one for it; -1 if there is none
inline int beyondStandardStreams(int number) noexcept {
    if (number < 0 || number > STDERR_FILENO) {
        return number;
    }
    const int beyond = fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(number);
    errno = error;
    return beyond;
}

/// Owns an open file, socket or the like, and closes it.
class FileDescriptor {
public:
    FileDescriptor() noexcept = default;
    explicit FileDescriptor(int opened) noexcept : number_(beyondStandardStreams(opened)) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, NONE)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~FileDescriptor() {
        if (isOpen()) {
            close(number_);
        }
    }

    bool isOpen() const noexcept { return number_ != NONE; }
    int number() const noexcept { return number_; }

private:
    static constexpr int NONE = -1;

    int number_ = NONE;
};

} // namespace Platform
} // namespace ZAV
