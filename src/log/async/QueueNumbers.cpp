#include "log/async/QueueNumbers.h"

namespace ZAV {
namespace Log {

/// What leaves the queue is read first: what entered it is never less.
LogStatistics QueueNumbers::statistics() const noexcept {
    LogStatistics statistics;
    statistics.delivered = delivered_.load(std::memory_order_acquire);
    statistics.discarded = discarded_.load(std::memory_order_acquire);
    statistics.queued = queued_.load(std::memory_order_acquire);
    statistics.waiting = statistics.queued - statistics.delivered - statistics.discarded;
    return statistics;
}

} // namespace Log
} // namespace ZAV
