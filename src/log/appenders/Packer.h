#pragma once

#include "log/async/Bell.h"
#include "platform/CriticalSection.h"
#include "platform/NeverDestroyed.h"

#include <atomic>
#include <list>
#include <string>

namespace ZAV {
namespace Log {

class Appender;

/// Packs rolled files, one after another, in a thread of its own at low priority. The thread is there only
/// while files wait to be packed, so it neither outlives them nor keeps a process alive.
///
/// A forked child forgets what waits: its parent packs it.
class Packer : public Platform::NeverDestroyed<Packer> {
public:
    /// Has a file packed. One that waits already, or is being packed, is done for this user from now on.
    /// \param user for `forget`, and to be named as the one that fails
    /// \param mayGrow whether a forked child may still be about to write to it, so that it is left alone for a second
    void pack(const Appender* user, const std::string& path, bool mayGrow);

    /// \return whether nothing waits
    bool isIdle() ZAV_LOG_EXCLUDES(lock_);

    /// Has a failure of the series reported by the thread, for somebody who holds a lock that must not be
    /// held when listeners are called.
    void report(const Appender* user, const std::string& problem);

    /// Gives up what waits for that user, and interrupts what is being packed for it. Once it returns,
    /// nothing of that is done any more; only inside an appender or a listener it does not wait for that.
    void forget(const Appender* user) noexcept;

private:
    struct Job {
        const Appender*
            user; ///< changes under the lock, also of the job that is being done; and so does its name
        std::string name;
        std::string path;    ///< to be packed, if there is no problem
        std::string problem; ///< to be reported
        Deadline pause;      ///< not begun before it is over
    };

    friend NeverDestroyed;
    Packer();

    void add(Job job) ZAV_LOG_EXCLUDES(lock_);
    void startIfNeeded() noexcept ZAV_LOG_EXCLUDES(lock_);
    bool isTakenOver(const Job& job) ZAV_LOG_REQUIRES(lock_);
    static void run();
    const Job* first() ZAV_LOG_EXCLUDES(lock_);
    bool isIn(const Appender* user) ZAV_LOG_EXCLUDES(lock_);
    void work(const Job& job);
    void deliver(const Job& job, const std::string& problem) ZAV_LOG_EXCLUDES(lock_);
    void removeFirst() ZAV_LOG_EXCLUDES(lock_);
    void beginInChild() noexcept;

    Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK}; ///< held for short steps
    std::list<Job> jobs_ ZAV_LOG_GUARDED_BY(lock_);             ///< while the thread runs, it has the first
    bool isRunning_ ZAV_LOG_GUARDED_BY(lock_) = false;
    std::atomic<bool> isInterrupted_{
        false}; ///< whether the first job is to be given up; written under the lock
    Bell bell_; ///< rung when that is so, and when a job is over
};

} // namespace Log
} // namespace ZAV
