#pragma once

#include <IceUtil/Handle.h>
#include <IceUtil/Monitor.h>
#include <IceUtil/Mutex.h>
#include <IceUtil/Thread.h>
#include <IceUtil/ThreadException.h>
#include <IceUtil/Time.h>
#include <chrono>

namespace ZAV {
namespace Log {

// Threads and monitors for the dispatcher, based on IceUtil.

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

} // namespace Log
} // namespace ZAV
