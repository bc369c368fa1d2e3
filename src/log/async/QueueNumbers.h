#pragma once

#include "log/LogStatistics.h"

#include <atomic>
#include <cstdint>

namespace ZAV {
namespace Log {

/// Counts what becomes of queued messages. The numbers change one at a time, under a lock of the owner's, and
/// may be read at any time without it.
class QueueNumbers {
public:
    void addQueued() noexcept { add(queued_, 1); }
    void addDelivered(std::uint64_t count) noexcept { add(delivered_, count); }
    void addDiscarded(std::uint64_t count) noexcept { add(discarded_, count); }

    /// Forgets the waiting messages: they were never queued.
    void forgetWaiting() noexcept { queued_ = delivered_ + discarded_; }

    /// \return the number of the message that was queued last, counted from 1
    std::uint64_t last() const noexcept { return queued_.load(std::memory_order_relaxed); }

    /// \return the numbers of the queue; `failed` is not counted here
    LogStatistics statistics() const noexcept;

private:
    using Number = std::atomic<std::uint64_t>;

    /// No step that locks the memory bus: nobody else writes meanwhile.
    static void add(Number& number, std::uint64_t count) noexcept {
        number.store(number.load(std::memory_order_relaxed) + count, std::memory_order_release);
    }

    Number queued_{0};
    Number delivered_{0};
    Number discarded_{0};
};

} // namespace Log
} // namespace ZAV
