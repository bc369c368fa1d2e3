#pragma once

#include "log/async/Bell.h"
#include "platform/CriticalSection.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace ZAV {
namespace Log {

/// The lines of messages that the queue has discarded, on their way to the standard error stream, where they
/// come in their order.
///
/// One thread at a time writes, and holds no lock meanwhile, since a standard error that nobody reads may
/// keep it for ever. The others leave their lines to it.
class DiscardedLines {
public:
    /// Waits while many lines wait to be written. A thread that is writing them itself does not wait.
    void waitForRoom();

    /// Adds a line; `write` has to follow.
    /// \param line empty if there was no memory for it
    /// \param reason what the line begins with, and all that is shown in the place of an empty one
    void add(std::string line, const char* reason) noexcept;

    /// Writes what waits, unless another thread does.
    void write();

    /// Waits until all is written, as long as the thread that writes makes progress.
    void finish();

    /// Forgets what the parent of a forked child has to write.
    void renewInChild() noexcept;

private:
    struct Line {
        std::string text;
        const char* reason;
        int depth; ///< lines within whose writing the message was discarded, one within the other
    };

    bool begin() noexcept;
    bool takeNext(Line& line) noexcept;
    std::size_t waitingBytes() noexcept;

    Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK};
    std::deque<Line> lines_ ZAV_LOG_GUARDED_BY(lock_);
    std::size_t bytes_ ZAV_LOG_GUARDED_BY(lock_) = 0; ///< of the lines that wait
    /// Lines that there was no memory to keep; each is shown as the reason alone.
    int withoutMemory_ ZAV_LOG_GUARDED_BY(lock_) = 0;
    const char* theirReason_ ZAV_LOG_GUARDED_BY(lock_) = "";
    bool isWriting_ ZAV_LOG_GUARDED_BY(lock_) = false;
    std::uint64_t taken_ ZAV_LOG_GUARDED_BY(lock_) = 0; ///< lines that were or are being written
    Bell bell_;                                         ///< rung when a line was written
};

} // namespace Log
} // namespace ZAV
