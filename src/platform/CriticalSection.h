#pragma once

#include "NativeLock.h" // the system's own, from the folder of the system

// Names for clang's thread-safety attributes. A member says which lock guards it, a function which lock it
// needs, and clang's `-Wthread-safety` checks both. Other compilers see nothing.

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

/// A recursive lock: the thread that holds it may take it again and releases it as often. A thin wrapper of
/// the system's, in a form that the thread-safety analysis knows.
class ZAV_LOG_CAPABILITY("critical section") CriticalSection {
public:
    /// \param rule what a fork does about the lock while another thread holds it
    explicit CriticalSection(ForkRule rule = FREED_IN_CHILD) : native_(rule) {}
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    /// Waits until no other thread holds the lock, then holds it.
    void lock() ZAV_LOG_ACQUIRE() { native_.lock(); }

    /// Holds the lock if no other thread does.
    /// \return true if the caller holds it now; false, without waiting, if another thread does
    bool tryLock() ZAV_LOG_TRY_ACQUIRE(true) { return native_.tryLock(); }

    /// Waits until the other thread that holds the lock at the moment, if one does, has given it back. Those
    /// who take it again and again without a pause let this wait come in between, though the lock is not fair
    /// otherwise.
    void awaitHolder() { native_.awaitHolder(); }

    /// Gives one `lock` back; the caller must hold the lock.
    void unlock() ZAV_LOG_RELEASE() { native_.unlock(); }

    /// \return true if the caller, who holds the lock, has taken it once only
    bool isHeldOnce() const ZAV_LOG_REQUIRES(this) { return native_.isHeldOnce(); }

private:
    friend class UnchangedInScope;

    NativeLock native_;
};

/// Says that what a lock guards does not change in a scope, in which the caller, who holds the lock, may wait
/// without end: for the reader of a pipe, or for a disk. A fork does not wait for that end; the child finds
/// the lock free.
class UnchangedInScope {
public:
    explicit UnchangedInScope(CriticalSection& criticalSection) ZAV_LOG_REQUIRES(criticalSection)
        : native_(criticalSection.native_) {
        native_.beginUnchanged();
    }
    ~UnchangedInScope() { native_.endUnchanged(); }
    UnchangedInScope(const UnchangedInScope&) = delete;
    UnchangedInScope& operator=(const UnchangedInScope&) = delete;

private:
    NativeLock& native_;
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
