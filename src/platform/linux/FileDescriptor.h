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

/// Keeps the numbers of the standard streams that the program has closed from whatever is opened in its
/// scope. What is written there meanwhile fails as before: the system opens the place in their stead, and
/// nothing that could be read or written.
///
/// For as long as they are kept, another scope in the same library must not end. What the program itself
/// opens gets a higher number.
class KeptStandardNumbers {
public:
    KeptStandardNumbers() noexcept {
        int number = openNothing();
        while (number >= 0 && number <= STDERR_FILENO) {
            isKept_[number] = true;
            number = openNothing();
        }
        if (number >= 0) {
            close(number);
        }
    }
    ~KeptStandardNumbers() {
        const int error = errno;
        for (int number = 0; number <= STDERR_FILENO; ++number) {
            if (isKept_[number] && isNothing(number)) {
                close(number);
            }
        }
        errno = error;
    }
    KeptStandardNumbers(const KeptStandardNumbers&) = delete;
    KeptStandardNumbers& operator=(const KeptStandardNumbers&) = delete;

    bool areAny() const noexcept { return isKept_[0] || isKept_[1] || isKept_[2]; }

private:
    static int openNothing() noexcept { return ::open("/", O_PATH | O_CLOEXEC); }

    /// The program may have put a stream of its own in the place meanwhile.
    static bool isNothing(int number) noexcept {
        const int flags = fcntl(number, F_GETFL);
        return flags >= 0 && (flags & O_PATH) != 0;
    }

    bool isKept_[STDERR_FILENO + 1] = {};
};

/// Whether a standard stream was closed when that was last noticed.
inline std::atomic<bool> isStandardStreamClosed{fcntl(STDIN_FILENO, F_GETFD) < 0 ||
                                                fcntl(STDOUT_FILENO, F_GETFD) < 0 ||
                                                fcntl(STDERR_FILENO, F_GETFD) < 0};

/// A program that has closed a standard stream must not get a file of the library's in its place: what it or
/// a standard stream's appender writes there would go into that file. See `KeptStandardNumbers` for the
/// moment before this is called.
/// \param number what the system has opened, or -1
/// \return the same, or in the place of a standard stream another one for it; -1 if there is none
inline int beyondStandardStreams(int number) noexcept {
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

/// Owns an open file, socket or the like, and closes it, unless the program has closed it and the number is
/// something else's by now. Where the system does not tell two of a kind apart, they pass for the same.
class FileDescriptor {
public:
    FileDescriptor() noexcept = default;
    explicit FileDescriptor(int opened) noexcept : number_(beyondStandardStreams(opened)) {
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

    /// \return whether the number still leads to what was opened
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

/// Writes all of a text, in one piece if the system takes it so. The thread is not cancelled meanwhile.
/// \return how many bytes the system took; fewer than all if it refused the rest
std::size_t writeAll(int descriptor, const char* text, std::size_t size);

/// \return whether the process may write no file beyond some size
bool isFileSizeLimited() noexcept;

/// While it lives, a pipe or socket whose other end has gone, and a file at the process's limit of size, fail
/// the writes of its thread without the signal (SIGPIPE, SIGXFSZ) that would end the process. What the
/// process does about these signals is not touched, and one that somebody else has sent stays. `errno` is
/// afterwards what it was before.
class WriteSignalGuard {
public:
    /// \param descriptor what will be written to; if it is a file, nothing has to be done unless sizes are limited.
    ///        A bad one stands for anything.
    explicit WriteSignalGuard(int descriptor, bool isSizeLimited) noexcept;
    ~WriteSignalGuard();
    WriteSignalGuard(const WriteSignalGuard&) = delete;
    WriteSignalGuard& operator=(const WriteSignalGuard&) = delete;

private:
    void block() noexcept;
    void unblock() noexcept;

    const NoCancellation noCancellation_; ///< a thread that takes a signal may be cancelled there
    const int error_;
    const bool mayRaise_;
    sigset_t before_ = {}; ///< the signals that the thread blocked by itself
    sigset_t own_ = {};    ///< those that only a write of this thread can have left pending
};

} // namespace Platform
} // namespace ZAV
