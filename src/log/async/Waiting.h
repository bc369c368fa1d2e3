#pragma once

#include "Threading.h" // from `ice/` or `standard/`, as built
#include "platform/Threads.h"
#include "zav-util/TimeUtils.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <new>

namespace ZAV {
namespace Log {

/// The end of a wait, on the monotonic clock.
class Deadline {
public:
    using Clock = std::chrono::steady_clock;

    /// No deadline.
    Deadline() = default;

    /// \param limit from now
    explicit Deadline(std::chrono::microseconds limit) : end_(Clock::now() + std::min(limit, LONGEST)) {}

    /// \param duration from now; 0 for no deadline
    static Deadline after(Util::TimeUtils::Time duration) {
        const std::uint64_t longest = static_cast<std::uint64_t>(LONGEST.count());
        return duration == Util::TimeUtils::Time()
                   ? Deadline()
                   : Deadline(std::chrono::microseconds(std::min(duration.microseconds(), longest)));
    }

    Deadline orEarlier(const Deadline& other) const { return other.end_ < end_ ? other : *this; }

    bool isOver() const { return end_ != NEVER && Clock::now() >= end_; }

    /// \return duration of the next step of the wait, at least a microsecond
    std::chrono::microseconds step() const {
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end_ - Clock::now());
        return std::clamp(left, std::chrono::microseconds(1), LONGEST_STEP);
    }

    bool hasEnd() const { return end_ != NEVER; }

private:
    static constexpr Clock::time_point NEVER = Clock::time_point::max();
    static constexpr std::chrono::microseconds LONGEST = std::chrono::hours(24 * 36500);
    static constexpr std::chrono::microseconds LONGEST_STEP = std::chrono::hours(24 * 20);

    Clock::time_point end_ = NEVER;
};

/// Lets threads wait until a condition holds. It guards no data: the condition reads atomics or takes a lock
/// itself. Notify after the change, without holding a lock that the condition takes.
class WaitPoint {
public:
    WaitPoint() = default;
    WaitPoint(const WaitPoint&) = delete;
    WaitPoint& operator=(const WaitPoint&) = delete;

    /// Waits until the condition holds; it is checked now and on each notification.
    /// \return false if it does not hold at the deadline
    template <typename Condition>
    bool wait(const Deadline& deadline, Condition condition) {
        const Platform::NoCancellation noCancellation; // a cancelled wait would leave the monitor locked
        const Locked locked(monitor_);
        bool holds = condition();
        while (!holds && !deadline.isOver()) {
            if (deadline.hasEnd()) {
                monitor_.waitFor(deadline.step());
            } else {
                monitor_.wait();
            }
            holds = condition();
        }
        return holds;
    }

    /// Makes all waiting threads check their condition.
    void notifyAll() {
        const Locked locked(monitor_);
        monitor_.notifyAll();
    }

    /// In a forked child, where no thread waits: replaces the monitor, which a thread of the parent may have
    /// locked.
    void renewInChild() { new (&monitor_) Monitor; }

private:
    class Locked {
    public:
        explicit Locked(Monitor& monitor) : monitor_(monitor) { monitor_.lock(); }
        ~Locked() { monitor_.unlock(); }
        Locked(const Locked&) = delete;
        Locked& operator=(const Locked&) = delete;

    private:
        Monitor& monitor_;
    };

    Monitor monitor_;
};

} // namespace Log
} // namespace ZAV
