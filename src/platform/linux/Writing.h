#pragma once

#include "platform/CancellationGuard.h"

#include <cstddef>

namespace ZAV {
namespace Platform {

/// Writes all of a text, in one piece if the system takes it so. The thread is not cancelled meanwhile.
/// \return how many bytes the system took; fewer than all if it refused the rest
std::size_t writeAll(int descriptor, const char* text, std::size_t size);

/// While it lives, a pipe or socket whose other end has gone fails the writes of its thread without the
/// signal (SIGPIPE) that would end the process. What the process does about that signal is not touched, and
/// one that somebody else has sent stays. `errno` is afterwards what it was before.
class BrokenPipeGuard {
public:
    /// \param descriptor what will be written to; if it is a file, nothing has to be done. A bad one stands for
    ///        anything.
    explicit BrokenPipeGuard(int descriptor) noexcept;
    ~BrokenPipeGuard();
    BrokenPipeGuard(const BrokenPipeGuard&) = delete;
    BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;

private:
    void block() noexcept;
    void unblock() noexcept;

    const NoCancellation noCancellation_; ///< a thread that takes a signal may be cancelled there
    const int error_;
    const bool mayBreak_;
    bool wasBlocked_ = false;
    bool wasPending_ = false;
};

} // namespace Platform
} // namespace ZAV
