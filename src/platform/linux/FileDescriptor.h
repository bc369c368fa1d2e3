#pragma once

#include "platform/Threads.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ZAV {
namespace Platform {

/// Reserves the descriptor numbers of standard streams that the program has closed, so that nothing opened in
/// its scope gets them. They are occupied with `O_PATH` descriptors, so reads and writes of these streams
/// keep failing.
///
/// No other such scope in the same library may end meanwhile. What the program itself opens gets a higher
/// number.
class ReservedStandardDescriptors {
public:
    ReservedStandardDescriptors() noexcept {
        int number = openNothing();
        while (number >= 0 && number <= STDERR_FILENO) {
            isKept_[number] = true;
            number = openNothing();
        }
        if (number >= 0) {
            close(number);
        }
    }
    ~ReservedStandardDescriptors() {
        const int error = errno;
        for (int number = 0; number <= STDERR_FILENO; ++number) {
            if (isKept_[number] && isNothing(number)) {
                close(number);
            }
        }
        errno = error;
    }
    ReservedStandardDescriptors(const ReservedStandardDescriptors&) = delete;
    ReservedStandardDescriptors& operator=(const ReservedStandardDescriptors&) = delete;

    bool areAny() const noexcept { return isKept_[0] || isKept_[1] || isKept_[2]; }

private:
    static int openNothing() noexcept { return ::open("/", O_PATH | O_CLOEXEC); }

    /// The program may have opened a stream of its own under the number meanwhile.
    static bool isNothing(int number) noexcept {
        const int flags = fcntl(number, F_GETFL);
        return flags >= 0 && (flags & O_PATH) != 0;
    }

    bool isKept_[STDERR_FILENO + 1] = {};
};

/// Whether a standard stream was closed at the last check.
inline std::atomic<bool> isStandardStreamClosed{fcntl(STDIN_FILENO, F_GETFD) < 0 ||
                                                fcntl(STDOUT_FILENO, F_GETFD) < 0 ||
                                                fcntl(STDERR_FILENO, F_GETFD) < 0};

/// Moves a descriptor out of the range of the standard streams: if the program has closed one, what it or a
/// `StdoutAppender` writes there would go into the library's file. See `ReservedStandardDescriptors` for the
/// time before this call.
/// \param number an open descriptor, or -1
/// \return the same, or a duplicate above the standard streams that replaces it; -1 on failure
inline int moveAboveStandardStreams(int number) noexcept {
    if (number < 0 || number > STDERR_FILENO) {
        return number;
    }
    isStandardStreamClosed.store(true, std::memory_order_relaxed);
    const int beyond = fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(number);
    errno = error;
    return beyond;
}

/// Owns a file descriptor and closes it, unless the program has closed it and the number refers to something
/// else by now. Objects that the system gives the same device and inode count as the same.
class FileDescriptor {
public:
    FileDescriptor() noexcept = default;
    explicit FileDescriptor(int opened) noexcept : number_(moveAboveStandardStreams(opened)) {
        struct stat status;
        if (isOpen() && fstat(number_, &status) == 0) {
            device_ = status.st_dev;
            inode_ = status.st_ino;
        }
    }
    FileDescriptor(FileDescriptor&& other) noexcept { *this = std::move(other); }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        std::swap(device_, other.device_);
        std::swap(inode_, other.inode_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    bool isOpen() const noexcept { return number_ != NONE; }
    int number() const noexcept { return number_; }

    /// \return the number, which the caller owns from now on
    int release() noexcept { return std::exchange(number_, NONE); }

    /// \return whether the number still refers to what was opened
    bool isStillOwn() const noexcept {
        struct stat status;
        return isOpen() && fstat(number_, &status) == 0 && status.st_dev == device_ &&
               status.st_ino == inode_;
    }

    void close() noexcept {
        if (isStillOwn()) {
            ::close(number_);
        }
        number_ = NONE;
    }

private:
    static constexpr int NONE = -1;

    int number_ = NONE;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

/// Writes a whole text, in a single call if the system accepts it whole. Not a cancellation point.
/// \return how many bytes the system accepted; fewer than all if it refused the rest
std::size_t writeAll(int descriptor, const char* text, std::size_t size);

/// \return whether the process has a file size limit
bool isFileSizeLimited() noexcept;

/// In its scope, writes of this thread to a closed pipe or socket, or beyond the file size limit, fail
/// without the signal (SIGPIPE, SIGXFSZ) that would end the process. The process's handling of these signals
/// is unchanged, and one sent by somebody else stays pending. Restores `errno`.
class WriteSignalGuard {
public:
    /// \param descriptor the target of the writes; a file needs no guard unless sizes are limited. An invalid
    ///        descriptor stands for any target.
    explicit WriteSignalGuard(int descriptor, bool isSizeLimited) noexcept;
    ~WriteSignalGuard();
    WriteSignalGuard(const WriteSignalGuard&) = delete;
    WriteSignalGuard& operator=(const WriteSignalGuard&) = delete;

private:
    void block() noexcept;
    void unblock() noexcept;

    const NoCancellation noCancellation_; ///< taking a pending signal is a cancellation point
    const int error_;
    const bool mayRaise_;
    sigset_t before_ = {}; ///< the thread's previous mask
    sigset_t own_ = {};    ///< the signals that only a write of this thread can have left pending
};

} // namespace Platform
} // namespace ZAV
