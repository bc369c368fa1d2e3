#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

namespace ZAV {
namespace Log {

// Threads and monitors for the dispatcher, based on the standard library.

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

} // namespace Log
} // namespace ZAV
