#include "log/async/Deadline.h"

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

namespace {

/// A longer wait counts as one without an end, and keeps the arithmetic in range.
constexpr Time LONGEST_TIMEOUT = Time(36500, Util::TimeUtils::DAY);

IceUtil::Time now() {
    return IceUtil::Time::now(IceUtil::Time::Monotonic);
}

} // namespace

Deadline::Deadline(Time timeout)
    : hasEnd_(timeout != Time() && timeout <= LONGEST_TIMEOUT),
      end_(hasEnd_ ? now() + IceUtil::Time::microSeconds(static_cast<IceUtil::Int64>(timeout.microseconds()))
                   : IceUtil::Time()) {}

bool Deadline::isOver() const {
    return hasEnd_ && now() >= end_;
}

void Deadline::wait(QueueMonitor& monitor) const {
    if (!hasEnd_) {
        monitor.wait();
        return;
    }
    const IceUtil::Int64 left = (end_ - now()).toMicroSeconds();
    if (left > 0) {
        monitor.timedWait(Time(static_cast<std::uint64_t>(left), Util::TimeUtils::USEC));
    }
}

} // namespace Log
} // namespace ZAV
