#pragma once

#include "platform/Process.h"

#include <atomic>
#include <pthread.h>

namespace ZAV {
namespace Platform {

/// A mutex that counts how often its holder has taken it.
///
/// The system's own recursive mutex would not do: it knows its holder by a number that a fork changes, so a
/// thread that forks while it holds one could never release it in the child.
class NativeLock {
public:
    explicit NativeLock(ForkRule rule);
    ~NativeLock();
    NativeLock(const NativeLock&) = delete;
    NativeLock& operator=(const NativeLock&) = delete;

    void lock() {
        if (delayed_.load(std::memory_order_relaxed) > 0) {
            letDelayedFirst();
        }
        lockAtOnce();
    }

    bool tryLock() {
        const pthread_t self = pthread_self();
        if (!isHeldBy(self)) {
            if (pthread_mutex_trylock(&mutex_) != 0) {
                return false;
            }
            holder_.store(self, std::memory_order_relaxed);
        }
        ++count_;
        return true;
    }

    void unlock() {
        if (--count_ == 0) {
            holder_.store(NOBODY, std::memory_order_relaxed);
            pthread_mutex_unlock(&mutex_);
        }
    }

    void awaitHolder();

    bool isHeldOnce() const { return count_ == 1; }

    void beginUnchanged() { isUnchanged_ = true; }

    /// A fork that goes by this lock looks at the one before it reads the other, and here it is the other way
    /// around: one of the two sees what the other has written.
    void endUnchanged() {
        isUnchanged_ = false;
        if (isAnyPassed_) {
            awaitPassingFork();
        }
    }

private:
    friend class ForkLocks;
    static constexpr pthread_t NOBODY = 0;

    bool isHeldBy(pthread_t thread) const { return holder_.load(std::memory_order_relaxed) == thread; }

    /// A mutex without a known holder may still be locked: a thread records itself after it has locked it,
    /// and clears that before it unlocks it.
    void makeFree() {
        pthread_mutex_init(&mutex_, nullptr);
        holder_.store(NOBODY, std::memory_order_relaxed);
        count_ = 0;
        isUnchanged_ = false;
    }
    void letDelayedFirst();
    static void awaitPassingFork();

    bool isUnchangedByOther() const { return isUnchanged_ && !isHeldBy(pthread_self()); }

    bool lockOrPass();

    /// \return true: the caller holds it
    bool lockAtOnce() {
        const pthread_t self = pthread_self();
        if (!isHeldBy(self)) {
            pthread_mutex_lock(&mutex_);
            holder_.store(self, std::memory_order_relaxed);
        }
        ++count_;
        return true;
    }

    static std::atomic<unsigned> delayed_; ///< forks, and `awaitHolder`s, that have found a lock busy
    static std::atomic<bool> isAnyPassed_; ///< a fork goes by a lock whose holder changes nothing

    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    std::atomic<pthread_t> holder_{NOBODY};
    unsigned count_ = 0;                   ///< used by the holder alone
    std::atomic<bool> isUnchanged_{false}; ///< whether the holder lets what is guarded alone for now
    const ForkRule rule_;

    // Under the mutex over the list of all locks
    std::atomic<unsigned> waiting_{
        0};                 ///< threads that wait for this lock in order to fork, or in `awaitHolder`
    bool isPassed_ = false; ///< a fork has waited for it, and goes by while its holder changes nothing
    NativeLock* previous_ = nullptr;
    NativeLock* next_ = nullptr;
};

/// Has every fork deal with all locks, after what `atFork` was given for before it and before what that was
/// given for the child.
void haveForksDealWithLocks(void (*take)(), void (*releaseInParent)(), void (*renewInChild)());

} // namespace Platform
} // namespace ZAV
