#pragma once

#include "NativeLock.h" // the platform's own, from its directory

// Names for clang's thread-safety attributes: a member names the lock that guards it, a function the lock it
// needs, and clang's `-Wthread-safety` checks both. Empty for other compilers.

#if defined(__clang__)
#define ZAV_LOG_ANNOTATION(attribute) __attribute__((attribute))
#else
#define ZAV_LOG_ANNOTATION(attribute)
#endif

#define ZAV_LOG_CAPABILITY(name) ZAV_LOG_ANNOTATION(capability(name))
#define ZAV_LOG_SCOPED_CAPABILITY ZAV_LOG_ANNOTATION(scoped_lockable)
#define ZAV_LOG_GUARDED_BY(lock) ZAV_LOG_ANNOTATION(guarded_by(lock))
#define ZAV_LOG_REQUIRES(...) ZAV_LOG_ANNOTATION(requires_capability(__VA_ARGS__))
#define ZAV_LOG_EXCLUDES(...) ZAV_LOG_ANNOTATION(locks_excluded(__VA_ARGS__))
#define ZAV_LOG_ACQUIRE(...) ZAV_LOG_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ZAV_LOG_TRY_ACQUIRE(...) ZAV_LOG_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define ZAV_LOG_RELEASE(...) ZAV_LOG_ANNOTATION(release_capability(__VA_ARGS__))
#define ZAV_LOG_RETURN_CAPABILITY(lock) ZAV_LOG_ANNOTATION(lock_returned(lock))
#define ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS ZAV_LOG_ANNOTATION(no_thread_safety_analysis)

namespace ZAV {
namespace Platform {

/// A recursive lock: its holder may take it again and must release it as often. A thin wrapper that makes the
/// platform's lock known to the thread-safety analysis.
class ZAV_LOG_CAPABILITY("critical section") CriticalSection {
public:
    /// \param rule how a fork treats the lock while another thread holds it
    explicit CriticalSection(ForkRule rule = FREED_IN_CHILD) : native_(rule) {}
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void lock() ZAV_LOG_ACQUIRE() { native_.lock(); }

    /// \return true if the caller now holds the lock; false, without waiting, if another thread does
    bool tryLock() ZAV_LOG_TRY_ACQUIRE(true) { return native_.tryLock(); }

    /// Waits until the thread that currently holds the lock, if another does, has released it. Threads that
    /// retake the lock without a pause let this call in between, though the lock is not fair otherwise.
    void awaitHolder() { native_.awaitHolder(); }

    /// Undoes one `lock`; the caller must hold the lock.
    void unlock() ZAV_LOG_RELEASE() { native_.unlock(); }

    /// \return true if the caller, who holds the lock, has taken it only once
    bool isHeldOnce() const ZAV_LOG_REQUIRES(this) { return native_.isHeldOnce(); }

private:
    friend class BlockingIoScope;

    NativeLock native_;
};

/// Marks a scope in which the caller holds the lock but does not change what it guards, and may block
/// indefinitely: on a full pipe or a slow disk. A fork waits only briefly for the end of the scope; in the
/// child the lock is free.
class BlockingIoScope {
public:
    explicit BlockingIoScope(CriticalSection& criticalSection) ZAV_LOG_REQUIRES(criticalSection)
        : native_(criticalSection.native_) {
        native_.beginBlockingSection();
    }
    ~BlockingIoScope() { native_.endBlockingSection(); }
    BlockingIoScope(const BlockingIoScope&) = delete;
    BlockingIoScope& operator=(const BlockingIoScope&) = delete;

private:
    NativeLock& native_;
};

/// Tag: the scope takes over a lock that is already held.
enum AdoptLock { ADOPT_LOCK };

/// Holds a `CriticalSection` from construction to destruction.
class ZAV_LOG_SCOPED_CAPABILITY ScopedLock {
public:
    explicit ScopedLock(CriticalSection& criticalSection) ZAV_LOG_ACQUIRE(criticalSection)
        : criticalSection_(criticalSection) {
        criticalSection_.lock();
    }
    /// Takes over a lock that the caller already holds.
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
