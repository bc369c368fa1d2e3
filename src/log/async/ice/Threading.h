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

// What the dispatcher takes from IceUtil: threads, and monitors to wait at.

/// A lock with a condition. Whoever is notified wakes once it is unlocked.
class Monitor {
public:
    void lock() { monitor_.lock(); }
    void unlock() { monitor_.unlock(); }
    void notifyAll() { monitor_.notifyAll(); }

    /// Unlocks it until it is notified, or spuriously.
    void wait() { monitor_.wait(); }

    /// The same, but no longer than a duration.
    void waitFor(std::chrono::microseconds duration) {
        monitor_.timedWait(IceUtil::Time::microSeconds(duration.count()));
    }

private:
    IceUtil::Monitor<IceUtil::Mutex> monitor_;
};

/// A thread of the library's own.
class Worker {
public:
    /// Starts the thread.
    /// \throw std::exception if it cannot be started
    explicit Worker(void (*function)()) : thread_(new Thread(function)) { thread_->start(); }

    /// Waits until the function has returned.
    void join() { thread_->getThreadControl().join(); }

    /// Lets the thread go on by itself; nobody joins it.
    void detach() { thread_->getThreadControl().detach(); }

    /// \return what is thrown if the system refuses to set a thread's priority
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
