#pragma once

#include "platform/ThreadAnnotations.h"

namespace ZAV {
namespace Platform {

/// A recursive lock: the thread that holds it may take it again and releases it as often.
///
/// Not for applications: it can be seen because `Logger` has two. The system's own lock lives in `storage_`,
/// so that this header pulls in no header of the system.
class ZAV_LOG_CAPABILITY("critical section") CriticalSection {
public:
    CriticalSection();
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    /// Waits until no other thread holds the lock, then holds it.
    void lock() ZAV_LOG_ACQUIRE();

    /// Holds the lock if no other thread does.
    /// \return true if the caller holds it now; false, without waiting, if another thread does
    bool tryLock() ZAV_LOG_TRY_ACQUIRE(true);

    /// Gives one `lock` back; the caller must hold the lock.
    void unlock() ZAV_LOG_RELEASE();

    /// Tells the thread-safety analysis that no other thread can be here, for a reason that the caller
    /// states.
    void assumeExclusive() const ZAV_LOG_ASSERT_HELD(this) {}

private:
    alignas(16) unsigned char storage_[64];
};

/// Says that a scope takes over a lock that is held already.
enum AdoptLock { ADOPT_LOCK };

/// Holds a `CriticalSection` from its construction to the end of its scope, also when an exception leaves it.
class ZAV_LOG_SCOPED_CAPABILITY ScopedLock {
public:
    explicit ScopedLock(CriticalSection& criticalSection) ZAV_LOG_ACQUIRE(criticalSection)
        : criticalSection_(criticalSection) {
        criticalSection_.lock();
    }
    /// Takes over a lock that the caller holds.
    ScopedLock(CriticalSection& criticalSection, AdoptLock) ZAV_LOG_REQUIRES(criticalSection)
        : criticalSection_(criticalSection) {}
    ~ScopedLock() ZAV_LOG_RELEASE() { criticalSection_.unlock(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    CriticalSection& criticalSection_;
};

} // namespace Platform
} // namespace ZAV
