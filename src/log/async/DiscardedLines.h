#pragma once

#include "log/async/Threading.h"
#include "platform/CriticalSection.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace ZAV {
namespace Log {

/// The lines of discarded messages, to be written to the standard error stream in order.
///
/// One thread at a time writes, holding no lock, since a standard error that nobody reads may block it for
/// ever. Other threads leave their lines to it.
class DiscardedLines {
public:
    /// Waits while too many bytes are waiting to be written, unless the calling thread is writing itself.
    void waitForRoom();

    /// Adds a line; `write` must follow.
    /// \param line empty if out of memory
    /// \param reason prefix of the line; shown alone if the line is empty
    void add(std::string line, const char* reason) noexcept;

    /// Writes the waiting lines, unless another thread is doing so.
    void write();

    /// Waits until everything is written, as long as the writing thread makes progress.
    void finish();

    /// In a forked child: discards the lines, which the parent writes.
    void renewInChild() noexcept;

private:
    struct Line {
        std::string text;
        const char* reason;
        int depth; ///< nesting depth of the lines during whose writing the message was discarded
    };

    bool begin() noexcept;
    bool takeNext(Line& line) noexcept;
    std::size_t waitingBytes() noexcept;

    Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK};
    std::deque<Line> lines_ ZAV_LOG_GUARDED_BY(lock_);
    std::size_t bytes_ ZAV_LOG_GUARDED_BY(lock_) = 0; ///< of the waiting lines
    /// Number of lines lost for lack of memory; for each, only the reason is shown.
    int withoutMemory_ ZAV_LOG_GUARDED_BY(lock_) = 0;
    const char* theirReason_ ZAV_LOG_GUARDED_BY(lock_) = "";
    bool isWriting_ ZAV_LOG_GUARDED_BY(lock_) = false;
    std::uint64_t taken_ ZAV_LOG_GUARDED_BY(lock_) = 0; ///< number of lines written or being written
    WaitPoint waitPoint_;                               ///< notified for every line, and when writing ends
};

} // namespace Log
} // namespace ZAV
