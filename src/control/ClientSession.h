#pragma once

#include "control/LineBuffer.h"
#include "control/ReloadCall.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace ZAV {
namespace Log {

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
