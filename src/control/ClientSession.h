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

/// Cuts the bytes of one client into lines. It never keeps more than one line that is too long and what was
/// added last.
class LineBuffer {
public:
    /// The longest line, without its end.
    static constexpr std::size_t MAX_LENGTH = 4096;

    struct Line {
        std::string text; ///< without the LF or CR LF
        bool isTooLong;   ///< the text is dropped then; told as soon as the limit is passed
    };

    void append(const std::string& bytes);

    /// \return the next line, if it is there
    std::optional<Line> next();

private:
    std::optional<Line> nextEnded(std::size_t end);

    std::string bytes_;
    bool isSkipping_ = false; ///< the rest of a line that is too long, up to its end
};

/// \return the text with its control characters as `\n`, `\x1b` and the like: it then takes one line, and does
///         nothing to a terminal
std::string toPrintable(const std::string& text);

/// What the server keeps of a client while it is connected.
struct ClientSession {
    using Clock = std::chrono::steady_clock;

    LineBuffer lines;
    Clock::time_point
        silentSince;        ///< nothing that it asked for was done, nor a whole answer taken, since then
    bool isRefused = false; ///< its last request, which does not count then

    bool isFlushing = false; ///< its answer comes when the queue is written, or at `flushUntil`
    Clock::time_point flushUntil;
    std::uint64_t flushTarget = 0; ///< how many messages are delivered when all are that were queued then

    std::shared_ptr<ReloadCall> reload; ///< its answer comes when that is over; null if it asked for none

    /// \return whether an answer is on its way
    bool isWaiting() const { return isFlushing || reload != nullptr; }
};

} // namespace Log
} // namespace ZAV
