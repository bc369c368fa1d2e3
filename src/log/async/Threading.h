#pragma once

#include "platform/Threads.h"
#include "zav-util/TimeUtils.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <new>

#ifndef ZAV_LOG_WITH_ICE
#error "link zav-log-threading: the classes below differ with the build"
#endif
#if ZAV_LOG_WITH_ICE
#include <IceUtil/Handle.h>
#include <IceUtil/Monitor.h>
#include <IceUtil/Mutex.h>
#include <IceUtil/Thread.h>
#include <IceUtil/ThreadException.h>
#include <IceUtil/Time.h>
#else
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#endif

namespace ZAV {
namespace Log {

// Threads and monitors, based on IceUtil or on the standard library, as built. Nothing else depends on which.

#if ZAV_LOG_WITH_ICE

/// A lock with a condition variable. A notified thread wakes once the monitor is unlocked.
class Monitor {
public:
    void lock() { monitor_.lock(); }
    void unlock() { monitor_.unlock(); }
    void notifyAll() { monitor_.notifyAll(); }

    /// Unlocks, waits for a notification, and locks again. May wake spuriously.
    void wait() { monitor_.wait(); }

    /// The same with a timeout.
    void waitFor(std::chrono::microseconds duration) {
        monitor_.timedWait(IceUtil::Time::microSeconds(duration.count()));
    }

private:
    IceUtil::Monitor<IceUtil::Mutex> monitor_;
};

/// A thread of the library.
class Worker {
public:
    /// Starts the thread.
    /// \throw std::exception if it cannot be started
    explicit Worker(void (*function)()) : thread_(new Thread(function)) { thread_->start(); }

    /// Waits until the function has returned.
    void join() { thread_->getThreadControl().join(); }

    /// Detaches the thread, which then must not be joined.
    void detach() { thread_->getThreadControl().detach(); }

    /// \return the exception to throw if setting a thread's priority fails
    static IceUtil::ThreadSyscallException priorityFailure(int error) { return {__FILE__, __LINE__, error}; }

private:
    class Thread : public IceUtil::Thread {
    public:
        explicit Thread(void (*function)()) : function_(function) {}
        void run() override { function_(); }

    private:
        void (*const function_)();
    };

    const IceUtil::Handle<Thread> thread_;
};

#else

/// A lock with a condition variable.
class Monitor {
public:
    void lock() { mutex_.lock(); }
    void unlock() { mutex_.unlock(); }
    void notifyAll() { condition_.notify_all(); }

    /// Unlocks, waits for a notification, and locks again. May wake spuriously.
    void wait() {
        std::unique_lock<std::mutex> lock(mutex_, std::adopt_lock);
        condition_.wait(lock);
        lock.release();
    }

    /// The same with a timeout.
    void waitFor(std::chrono::microseconds duration) {
        std::unique_lock<std::mutex> lock(mutex_, std::adopt_lock);
        condition_.wait_for(lock, duration);
        lock.release();
    }

private:
    std::mutex mutex_;
    std::condition_variable condition_;
};

/// A thread of the library.
class Worker {
public:
    /// Starts the thread.
    /// \throw std::exception if it cannot be started
    explicit Worker(void (*function)()) : thread_(function) {}

    /// Waits until the function has returned.
    void join() { thread_.join(); }

    /// Detaches the thread, which then must not be joined.
    void detach() { thread_.detach(); }

    /// \return the exception to throw if setting a thread's priority fails
    static std::system_error priorityFailure(int error) { return {error, std::generic_category()}; }

private:
    std::thread thread_;
};

#endif

// Waiting, based on the monitor.

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
