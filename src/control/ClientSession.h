#pragma once

#include "control/RequestHandler.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ZAV {
namespace Log {

/// Splits the bytes of one client into lines. Buffers at most one overlong line plus the bytes appended last.
class LineBuffer {
public:
    /// The longest line, without its line end.
    static constexpr std::size_t MAX_LENGTH = 4096;

    struct Line {
        std::string text; ///< without LF or CR LF
        bool isTooLong;   ///< the text is then dropped; reported as soon as the limit is exceeded
    };

    void append(const std::string& bytes);

    /// \return the next line, if it is complete or too long
    std::optional<Line> next();

private:
    std::optional<Line> nextEnded(std::size_t end);

    std::string bytes_;
    bool isSkipping_ = false; ///< discarding the rest of an overlong line
};

/// \return the text with control characters escaped as `\n`, `\x1b` and the like: on one line, and harmless to a
///         terminal
std::string toPrintable(const std::string& text);

/// The state of a connected client.
struct ClientSession {
    using Clock = std::chrono::steady_clock;

    LineBuffer lines;
    Clock::time_point idleSince; ///< when a request was last carried out or an answer completely received
    bool isRefused = false;      ///< whether the last request was refused, which does not count as activity

    bool isFlushing = false; ///< answered when the queue is written, or at `flushUntil`
    Clock::time_point flushUntil;
    std::uint64_t flushTarget = 0; ///< delivery count at which all messages queued at the request are written

    std::shared_ptr<ReloadCall> reload; ///< answered when that is over; null if none was requested

    /// \return whether an answer is pending
    bool isWaiting() const { return isFlushing || reload != nullptr; }
};

} // namespace Log
} // namespace ZAV
