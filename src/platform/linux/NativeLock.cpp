#include "NativeLock.h"

namespace ZAV {
namespace Platform {

/// All locks of the library, which a fork has to deal with.
class AllLocks {
public:
    /// Never destroyed, since threads may still log while the process ends.
    static AllLocks& instance() {
        static AllLocks& locks = *new AllLocks;
        return locks;
    }

    void add(NativeLock& lock) {
        pthread_mutex_lock(&mutex_);
        lock.next_ = first_;
        if (first_ != nullptr) {
            first_->previous_ = &lock;
        }
        first_ = &lock;
        pthread_mutex_unlock(&mutex_);
    }

    void remove(NativeLock& lock) {
        pthread_mutex_lock(&mutex_);
        (lock.previous_ == nullptr ? first_ : lock.previous_->next_) = lock.next_;
        if (lock.next_ != nullptr) {
            lock.next_->previous_ = lock.previous_;
        }
        pthread_mutex_unlock(&mutex_);
    }

private:
    AllLocks() { pthread_atfork(takeAwaited, releaseAwaited, makeRestFree); }

    static void takeAwaited() {
        pthread_mutex_lock(&instance().mutex_);
        for (NativeLock* lock = instance().first_; lock != nullptr; lock = lock->next_) {
            if (lock->rule_ == AWAITED_BY_FORK) {
                lock->lock();
            }
        }
    }

    static void releaseAwaited() {
        for (NativeLock* lock = instance().first_; lock != nullptr; lock = lock->next_) {
            if (lock->rule_ == AWAITED_BY_FORK) {
                lock->unlock();
            }
        }
        pthread_mutex_unlock(&instance().mutex_);
    }

    /// In the child: what its only thread holds, it goes on holding, since the call in which it forked will
    /// release it.
    static void makeRestFree() {
        for (NativeLock* lock = instance().first_; lock != nullptr; lock = lock->next_) {
            if (!lock->isHeldBy(pthread_self())) {
                lock->makeFree();
            }
        }
        releaseAwaited();
    }

    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    NativeLock* first_ = nullptr;
};

namespace {

/// So that no thread makes it while another one forks.
const AllLocks& madeAtLoad = AllLocks::instance();

} // namespace

NativeLock::NativeLock(ForkRule rule) : rule_(rule) {
    AllLocks::instance().add(*this);
}

NativeLock::~NativeLock() {
    AllLocks::instance().remove(*this);
    pthread_mutex_destroy(&mutex_);
}

/// A mutex without a known holder may still be locked: a thread records itself after it has locked it, and
/// clears that before it unlocks it.
void NativeLock::makeFree() {
    pthread_mutex_init(&mutex_, nullptr);
    holder_.store(NOBODY, std::memory_order_relaxed);
    count_ = 0;
}

} // namespace Platform
} // namespace ZAV
