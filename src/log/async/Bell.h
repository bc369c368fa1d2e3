#pragma once

#include "Threading.h" // the one that the library is built with
#include "platform/Threads.h"
#include "zav-util/TimeUtils.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <new>

namespace ZAV {
namespace Log {

/// The end of a wait, by a clock that nobody sets.
class Deadline {
public:
    using Clock = std::chrono::steady_clock;

    /// The wait has no end.
    Deadline() = default;

    /// \param limit from now
    explicit Deadline(std::chrono::microseconds limit) : end_(Clock::now() + std::min(limit, LONGEST)) {}

    /// \param duration from now; 0 for no end
    static Deadline after(Util::TimeUtils::Time duration) {
        const std::uint64_t longest = static_cast<std::uint64_t>(LONGEST.count());
        return duration == Util::TimeUtils::Time()
                   ? Deadline()
                   : Deadline(std::chrono::microseconds(std::min(duration.microseconds(), longest)));
    }

    Deadline orEarlier(const Deadline& other) const { return other.end_ < end_ ? other : *this; }

    bool isOver() const { return end_ != NEVER && Clock::now() >= end_; }

    /// \return how long to wait in one step, at least a microsecond
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

/// What threads wait at until something has changed. It guards nothing: the condition is an atomic, or takes
/// a lock itself, and the bell is rung after the change, without a lock that the condition takes.
class Bell {
public:
    Bell() = default;
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;

    /// Waits until the condition holds, which is looked at now and whenever the bell is rung.
    /// \return false if it does not hold yet when the time is over
    template <typename Condition>
    bool wait(const Deadline& deadline, Condition condition) {
        const Platform::NoCancellation noCancellation; // or the monitor would stay locked
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

    /// Has all that wait look at their condition.
    void ring() {
        const Locked locked(monitor_);
        monitor_.notifyAll();
    }

    /// In a forked child, where nobody waits: puts a new monitor in the place of one that a thread of the
    /// parent may have locked.
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
