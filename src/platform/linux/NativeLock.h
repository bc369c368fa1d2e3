#pragma once

#include "platform/Process.h"

#include <atomic>
#include <pthread.h>

namespace ZAV {
namespace Platform {

/// A recursive mutex.
///
/// The system's recursive mutex will not do: it identifies its holder by thread id, which a fork changes, so
/// a thread that forks while holding one could never release it in the child.
class NativeLock {
public:
    explicit NativeLock(ForkRule rule);
    ~NativeLock();
    NativeLock(const NativeLock&) = delete;
    NativeLock& operator=(const NativeLock&) = delete;

    void lock() {
        if (delayed_.load(std::memory_order_relaxed) > 0) {
            yieldToWaitingForks();
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

    void beginBlockingSection() { isInBlockingSection_ = true; }

    /// A fork that bypasses this lock sets `isAnyBypassed_` before it reads `isInBlockingSection_`; here the
    /// order is reversed, so at least one side sees the other's write.
    void endBlockingSection() {
        isInBlockingSection_ = false;
        if (isAnyBypassed_) {
            awaitBypassingFork();
        }
    }

private:
    friend class ForkLocks;
    static constexpr pthread_t NOBODY = 0;

    bool isHeldBy(pthread_t thread) const { return holder_.load(std::memory_order_relaxed) == thread; }

    /// Reinitialised even without a recorded holder, since it may still be locked: a thread records itself
    /// after locking and clears the record before unlocking.
    void makeFree() {
        pthread_mutex_init(&mutex_, nullptr);
        holder_.store(NOBODY, std::memory_order_relaxed);
        count_ = 0;
        isInBlockingSection_ = false;
    }
    void yieldToWaitingForks();
    static void awaitBypassingFork();

    bool isInBlockingSectionOfOther() const { return isInBlockingSection_ && !isHeldBy(pthread_self()); }

    bool lockOrBypass();

    /// \return always true: the caller holds it
    bool lockAtOnce() {
        const pthread_t self = pthread_self();
        if (!isHeldBy(self)) {
            pthread_mutex_lock(&mutex_);
            holder_.store(self, std::memory_order_relaxed);
        }
        ++count_;
        return true;
    }

    static std::atomic<unsigned> delayed_;   ///< forks and `awaitHolder`s that wait for a busy lock
    static std::atomic<bool> isAnyBypassed_; ///< a fork is bypassing a lock whose holder changes nothing

    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    std::atomic<pthread_t> holder_{NOBODY};
    unsigned count_ = 0;                           ///< accessed by the holder only
    std::atomic<bool> isInBlockingSection_{false}; ///< whether the holder is in a `BlockingIoScope`
    const ForkRule rule_;

    // Under the mutex over the list of all locks
    std::atomic<unsigned> waiting_{
        0}; ///< threads that wait for this lock in order to fork, or in `awaitHolder`
    bool mayBeBypassed_ =
        false; ///< a fork has waited for it and may bypass it while its holder changes nothing
    NativeLock* previous_ = nullptr;
    NativeLock* next_ = nullptr;
};

/// Registers the handling of all locks around a fork: after the `before` functions of `atFork`, and before
/// its `inChild` functions.
void registerForkLockHandlers(void (*take)(), void (*releaseInParent)(), void (*renewInChild)());

} // namespace Platform
} // namespace ZAV
