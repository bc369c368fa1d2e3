#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

namespace ZAV {
namespace Log {

// What the dispatcher takes from the standard library: threads, and monitors to wait at.

/// A lock with a condition.
class Monitor {
public:
    void lock() { mutex_.lock(); }
    void unlock() { mutex_.unlock(); }
    void notifyAll() { condition_.notify_all(); }

    /// Unlocks it until it is notified, or spuriously.
    void wait() {
        std::unique_lock<std::mutex> lock(mutex_, std::adopt_lock);
        condition_.wait(lock);
        lock.release();
    }

    /// The same, but no longer than a duration.
    void waitFor(std::chrono::microseconds duration) {
        std::unique_lock<std::mutex> lock(mutex_, std::adopt_lock);
        condition_.wait_for(lock, duration);
        lock.release();
    }

private:
    std::mutex mutex_;
    std::condition_variable condition_;
};

/// A thread of the library's own.
class Worker {
public:
    /// Starts the thread.
    /// \throw std::exception if it cannot be started
    explicit Worker(void (*function)()) : thread_(function) {}

    /// Waits until the function has returned.
    void join() { thread_.join(); }

    /// Lets the thread go on by itself; nobody joins it.
    void detach() { thread_.detach(); }

    /// \return what is thrown if the system refuses to set a thread's priority
    static std::system_error priorityFailure(int error) { return {error, std::generic_category()}; }

private:
    std::thread thread_;
};

} // namespace Log
} // namespace ZAV
