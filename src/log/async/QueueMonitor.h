#pragma once

#include "platform/CriticalSection.h"
#include "zav-util/TimeUtils.h"

#include <IceUtil/Monitor.h>
#include <IceUtil/RecMutex.h>
#include <new>

namespace ZAV {
namespace Log {

/// The lock over the message queue with its condition, in a form that the thread-safety analysis knows. The
/// consumer waits on the condition for messages; other threads wait for what the consumer does.
class ZAV_LOG_CAPABILITY("monitor") QueueMonitor {
public:
    QueueMonitor() = default;
    QueueMonitor(const QueueMonitor&) = delete;
    QueueMonitor& operator=(const QueueMonitor&) = delete;

    void lock() ZAV_LOG_ACQUIRE();
    bool tryLock() ZAV_LOG_TRY_ACQUIRE(true);
    void unlock() ZAV_LOG_RELEASE();

    /// Releases the monitor until it is notified, or spuriously; holds it again on return.
    void wait() ZAV_LOG_REQUIRES(this);

    /// The same, but no longer than a duration, and no longer than 20 days, beyond which the system cannot
    /// count.
    void timedWait(Util::TimeUtils::Time duration) ZAV_LOG_REQUIRES(this);

    /// Wakes the waiting threads once the monitor is released.
    void notify() ZAV_LOG_REQUIRES(this);

    /// In a forked child, whose parent held the monitor while it forked: gives one `lock` back and puts a new
    /// monitor in the place of the old one, which is not destroyed, since it cannot be released there. Nobody
    /// waits on the new one; the calling thread holds it as often as it still has to release it.
    void renewInChild() ZAV_LOG_RELEASE();

private:
    using Monitor = IceUtil::Monitor<IceUtil::RecMutex>;

    /// A child puts a new one into the same place, since a fork must not need memory.
    union Place {
        Place() { new (&monitor) Monitor; }
        ~Place() { monitor.~Monitor(); }
        Monitor monitor;
    } place_;
    int waiting_ ZAV_LOG_GUARDED_BY(this) = 0; ///< threads
    int depth_ ZAV_LOG_GUARDED_BY(this) = 0;   ///< how often its holder has taken it
};

/// Holds a `QueueMonitor` to the end of its scope.
class ZAV_LOG_SCOPED_CAPABILITY QueueMonitorLock {
public:
    explicit QueueMonitorLock(QueueMonitor& monitor) ZAV_LOG_ACQUIRE(monitor) : monitor_(monitor) {
        monitor_.lock();
    }
    ~QueueMonitorLock() ZAV_LOG_RELEASE() { monitor_.unlock(); }
    QueueMonitorLock(const QueueMonitorLock&) = delete;
    QueueMonitorLock& operator=(const QueueMonitorLock&) = delete;

private:
    QueueMonitor& monitor_;
};

} // namespace Log
} // namespace ZAV
