#include "platform/Fork.h"

#include "NativeLock.h"
#include "platform/CancellationGuard.h"

#include <list>

namespace ZAV {
namespace Platform {

namespace {

std::atomic<unsigned> generation{0};

} // namespace

/// All locks of the library, which a fork has to deal with.
///
/// A lock may be busy for as long as a file is slow. So a fork takes all of them or none: it tries, and if
/// one is busy it gives all back, waits for that one with nothing in its hands, and tries the others again.
/// No order of the locks has to be kept.
class ForkLocks {
public:
    /// Never destroyed, since threads may still log while the process ends.
    static ForkLocks& instance() {
        static ForkLocks& locks = *new ForkLocks;
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

    /// Waits for a fork that waits for the lock. Nobody holds it any more, so that is not for long.
    void remove(NativeLock& lock) {
        const NoCancellation noCancellation;
        pthread_mutex_lock(&mutex_);
        while (lock.waitingForks_ > 0) {
            pthread_cond_wait(&awaitsNoMore_, &mutex_);
        }
        (lock.previous_ == nullptr ? first_ : lock.previous_->next_) = lock.next_;
        if (lock.next_ != nullptr) {
            lock.next_->previous_ = lock.previous_;
        }
        pthread_mutex_unlock(&mutex_);
    }

    void add(void (*before)(), void (*inChild)()) { handlers_.push_back({before, inChild}); }

private:
    struct Handlers {
        void (*before)();
        void (*inChild)();
    };

    ForkLocks() {
        pthread_atfork([] { instance().takeAll(); }, [] { instance().releaseInParent(); },
                       [] { instance().renewInChild(); });
    }

    void takeAll() {
        for (const Handlers& handlers : handlers_) {
            if (handlers.before != nullptr) {
                handlers.before();
            }
        }
        pthread_mutex_lock(&mutex_);
        NativeLock* busy = tryAllBut(nullptr);
        while (busy != nullptr) {
            NativeLock* const held = busy;
            waitFor(*held);
            busy = tryAllBut(held);
            if (busy != nullptr) {
                held->unlock();
            }
        }
    }

    /// Locks are made and destroyed meanwhile, but not this one.
    void waitFor(NativeLock& lock) {
        ++lock.waitingForks_;
        pthread_mutex_unlock(&mutex_);
        lock.lock();
        pthread_mutex_lock(&mutex_);
        --lock.waitingForks_;
        pthread_cond_broadcast(&awaitsNoMore_);
    }

    /// Takes all but the one that is held already, or none.
    /// \return one that another thread has, if there is one
    NativeLock* tryAllBut(const NativeLock* held) {
        for (NativeLock* lock = first_; lock != nullptr; lock = lock->next_) {
            if (lock->rule_ == AWAITED_BY_FORK && lock != held && !lock->tryLock()) {
                release(lock, held);
                return lock;
            }
        }
        return nullptr;
    }

    /// \param end the first one that was not taken; null if all were
    void release(const NativeLock* end = nullptr, const NativeLock* held = nullptr) {
        for (NativeLock* lock = first_; lock != end; lock = lock->next_) {
            if (lock->rule_ == AWAITED_BY_FORK && lock != held) {
                lock->unlock();
            }
        }
    }

    void releaseInParent() {
        release();
        pthread_mutex_unlock(&mutex_);
    }

    /// What the child's only thread holds, it goes on holding, since the call in which it forked will release
    /// it.
    void renewInChild() {
        generation.store(forkGeneration() + 1, std::memory_order_relaxed);
        for (NativeLock* lock = first_; lock != nullptr; lock = lock->next_) {
            lock->waitingForks_ = 0;
            if (!lock->isHeldBy(pthread_self())) {
                lock->makeFree();
            }
        }
        pthread_cond_init(&awaitsNoMore_, nullptr);
        releaseInParent();
        for (const Handlers& handlers : handlers_) {
            handlers.inChild();
        }
    }

    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER; ///< over the lists; held for short steps and the fork
    pthread_cond_t awaitsNoMore_ = PTHREAD_COND_INITIALIZER; ///< a fork waits for one lock less
    NativeLock* first_ = nullptr;
    std::list<Handlers> handlers_; ///< complete once the library is loaded
};

namespace {

/// So that no thread makes it while another one forks.
const ForkLocks& madeAtLoad = ForkLocks::instance();

} // namespace

NativeLock::NativeLock(ForkRule rule) : rule_(rule) {
    ForkLocks::instance().add(*this);
}

NativeLock::~NativeLock() {
    ForkLocks::instance().remove(*this);
    pthread_mutex_destroy(&mutex_);
}

/// A mutex without a known holder may still be locked: a thread records itself after it has locked it, and
/// clears that before it unlocks it.
void NativeLock::makeFree() {
    pthread_mutex_init(&mutex_, nullptr);
    holder_.store(NOBODY, std::memory_order_relaxed);
    count_ = 0;
}

void atFork(void (*before)(), void (*inChild)()) {
    ForkLocks::instance().add(before, inChild);
}

unsigned forkGeneration() noexcept {
    return generation.load(std::memory_order_relaxed);
}

} // namespace Platform
} // namespace ZAV
