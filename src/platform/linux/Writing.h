#pragma once

#include "platform/Threads.h"

#include <csignal>
#include <cstddef>

namespace ZAV {
namespace Platform {

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
