#include "NativeLock.h"

#include "platform/Process.h"
#include "platform/Threads.h"

#include <algorithm>
#include <chrono>

namespace ZAV {
namespace Platform {

namespace {

constexpr std::uint64_t SHORTEST_HOLD_UP = 500'000; ///< nanoseconds
constexpr std::uint64_t LONGEST_HOLD_UP = 64 * SHORTEST_HOLD_UP;

/// Nanoseconds a fork waits for a lock before it bypasses one whose holder changes nothing. Most writes have
/// finished by then, so the child inherits no partial line and no open file from them.
constexpr std::uint64_t BYPASS_TIMEOUT = 20'000'000;

/// \return nanoseconds of the monotonic clock
std::uint64_t now() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::nanoseconds(time).count());
}

timespec timeOf(std::uint64_t nanoseconds) {
    constexpr std::uint64_t SECOND = 1'000'000'000;
    return {static_cast<time_t>(nanoseconds / SECOND), static_cast<long>(nanoseconds % SECOND)};
}

} // namespace

/// All locks of the library, as far as a fork has to treat them.
///
/// A lock may be busy as long as a file is slow. So a fork takes all locks or none: if one is busy, it
/// releases the others, waits for that one while holding nothing, and tries the others again. So no lock
/// order has to be observed.
///
/// With threads that log continuously, it would hardly ever find all of them free. So a fork has precedence
/// for the lock that it waits for, and a fork that has failed twice holds up threads that hold none of the
/// locks, while the others continue until they hold none. The hold-up times out, since the fork may still
/// have to wait for a slow file; each further failure doubles the timeout, up to a limit.
///
/// A write may never finish, for example to a pipe that nobody reads. Its thread marks that it changes
/// nothing meanwhile, so a fork bypasses the lock after a timeout; if the write then finishes, its thread
/// waits for the fork.
class ForkLocks : public NeverDestroyed<ForkLocks> {
public:
    ForkLocks() {
        initCondition();
        registerForkLockHandlers([] { instance().takeAll(); }, [] { instance().releaseAll(); },
                                 [] { instance().renewAll(); });
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

    /// Waits until no fork or `awaitHolder` waits for the lock. The wait is short, since nobody holds the
    /// lock any more.
    void remove(NativeLock& lock) {
        const NoCancellation noCancellation;
        pthread_mutex_lock(&mutex_);
        waitForWaitersOf(lock);
        (lock.previous_ == nullptr ? first_ : lock.previous_->next_) = lock.next_;
        if (lock.next_ != nullptr) {
            lock.next_->previous_ = lock.previous_;
        }
        pthread_mutex_unlock(&mutex_);
    }

    void awaitHolder(NativeLock& lock) {
        const NoCancellation noCancellation;
        pthread_mutex_lock(&mutex_);
        ++NativeLock::delayed_;
        waitFor(lock, false);
        --NativeLock::delayed_;
        pthread_mutex_unlock(&mutex_);
        lock.unlock();
    }

    /// A fork holds the mutex until it is over.
    void awaitBypassingFork() {
        const NoCancellation noCancellation;
        pthread_mutex_lock(&mutex_);
        pthread_mutex_unlock(&mutex_);
    }

    /// Called before a thread takes a lock while a fork or an `awaitHolder` is delayed. The lock that these
    /// wait for is busy anyway, so giving them precedence delays nobody further.
    void yieldToWaitingForks(const NativeLock& lock) {
        const bool isHeldUp = holdsUp_.load(std::memory_order_relaxed) && lock.rule_ == AWAITED_BY_FORK;
        const bool mayGoOn = lock.waiting_.load(std::memory_order_relaxed) == 0 && !isHeldUp;
        if (mayGoOn || lock.isHeldBy(pthread_self())) {
            return;
        }
        const NoCancellation noCancellation;
        pthread_mutex_lock(&mutex_);
        waitForWaitersOf(lock);
        if (isHeldUp && holdsUp_.load(std::memory_order_relaxed) && !isAnyHeldBy(pthread_self())) {
            waitWhileHeldUp();
        }
        pthread_mutex_unlock(&mutex_);
    }

private:
    void takeAll() {
        pthread_mutex_lock(&mutex_);
        NativeLock* busy = tryAllBut(nullptr);
        if (busy != nullptr) {
            ++NativeLock::delayed_;
            waitForAll(*busy);
            --NativeLock::delayed_;
            holdsUp_.store(false, std::memory_order_relaxed);
            pthread_cond_broadcast(&forkGoesOn_);
        }
    }

    void releaseAll() {
        release();
        for (NativeLock* lock = first_; lock != nullptr; lock = lock->next_) {
            lock->mayBeBypassed_ = false;
        }
        NativeLock::isAnyBypassed_ = false;
        pthread_mutex_unlock(&mutex_);
    }

    /// Locks held by the child's only thread stay held, since the call in which it forked will release them.
    void renewAll() {
        for (NativeLock* lock = first_; lock != nullptr; lock = lock->next_) {
            lock->waiting_ = 0;
            if (!lock->isHeldBy(pthread_self())) {
                lock->makeFree();
            }
        }
        NativeLock::delayed_.store(0, std::memory_order_relaxed);
        initCondition();
        releaseAll();
    }

    void waitForAll(NativeLock& firstBusy) {
        NativeLock* busy = &firstBusy;
        for (std::uint64_t wait = SHORTEST_HOLD_UP; busy != nullptr;
             wait = std::min(2 * wait, LONGEST_HOLD_UP)) {
            NativeLock* const held = waitFor(*busy, true) ? busy : nullptr;
            busy->mayBeBypassed_ = held == nullptr;
            busy = tryAllBut(held);
            if (busy != nullptr) {
                heldUpUntil_ = now() + wait;
                holdsUp_.store(true, std::memory_order_relaxed);
                if (held != nullptr) {
                    held->unlock();
                }
            }
        }
    }

    /// Other locks may be created and destroyed meanwhile, but not this one. It yields to no other fork: two
    /// forks that did would deadlock.
    /// \param mayBypass whether to give up after a timeout if the holder changes nothing
    /// \return whether the lock is held now
    bool waitFor(NativeLock& lock, bool mayBypass) {
        ++lock.waiting_;
        pthread_mutex_unlock(&mutex_);
        const bool isTaken = mayBypass ? lock.lockOrBypass() : lock.lockAtOnce();
        pthread_mutex_lock(&mutex_);
        --lock.waiting_;
        pthread_cond_broadcast(&forkGoesOn_);
        return isTaken;
    }

    void waitForWaitersOf(const NativeLock& lock) {
        while (lock.waiting_.load(std::memory_order_relaxed) > 0) {
            pthread_cond_wait(&forkGoesOn_, &mutex_);
        }
    }

    /// Waits for the end of the current hold-up, not of later ones. The first thread to see that the latest
    /// has timed out ends it for all.
    void waitWhileHeldUp() {
        const std::uint64_t until = heldUpUntil_;
        const timespec end = timeOf(until);
        while (holdsUp_.load(std::memory_order_relaxed) && now() < until) {
            pthread_cond_timedwait(&forkGoesOn_, &mutex_, &end);
        }
        if (now() >= heldUpUntil_) {
            holdsUp_.store(false, std::memory_order_relaxed);
        }
    }

    bool isAnyHeldBy(pthread_t thread) const {
        for (const NativeLock* lock = first_; lock != nullptr; lock = lock->next_) {
            if (lock->rule_ == AWAITED_BY_FORK && lock->isHeldBy(thread)) {
                return true;
            }
        }
        return false;
    }

    void initCondition() {
        pthread_condattr_t attributes;
        pthread_condattr_init(&attributes);
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        pthread_cond_init(&forkGoesOn_, &attributes);
        pthread_condattr_destroy(&attributes);
    }

    /// Takes all locks except the one already held and those that it bypasses, or none.
    /// \return a lock that another thread holds; null if all were taken
    NativeLock* tryAllBut(const NativeLock* held) {
        for (NativeLock* lock = first_; lock != nullptr; lock = lock->next_) {
            if (lock->rule_ == AWAITED_BY_FORK && lock != held && !mayBypass(*lock) && !lock->tryLock()) {
                release(lock, held);
                return lock;
            }
        }
        return nullptr;
    }

    static bool mayBypass(const NativeLock& lock) {
        if (!lock.mayBeBypassed_) {
            return false;
        }
        NativeLock::isAnyBypassed_ = true; // before the lock is read, see `endBlockingSection`
        return lock.isInBlockingSectionOfOther();
    }

    /// \param end the first lock that was not taken; null if all were
    void release(const NativeLock* end = nullptr, const NativeLock* held = nullptr) {
        for (NativeLock* lock = first_; lock != end; lock = lock->next_) {
            if (lock->rule_ == AWAITED_BY_FORK && lock != held && lock->isHeldBy(pthread_self())) {
                lock->unlock();
            }
        }
    }

    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER; ///< guards the list; held briefly, and during a fork
    pthread_cond_t forkGoesOn_;        ///< a fork or `awaitHolder` has got a lock, or a fork has all
    std::atomic<bool> holdsUp_{false}; ///< whether threads are held up for a fork; written under the mutex
    std::uint64_t heldUpUntil_ = 0;    ///< when the hold-up times out
    NativeLock* first_ = nullptr;
};

namespace {

const ForkLocks& madeAtLoad = ForkLocks::instance();

} // namespace

NativeLock::NativeLock(ForkRule rule) : rule_(rule) {
    ForkLocks::instance().add(*this);
}

NativeLock::~NativeLock() {
    ForkLocks::instance().remove(*this);
    pthread_mutex_destroy(&mutex_);
}

std::atomic<unsigned> NativeLock::delayed_{0};
std::atomic<bool> NativeLock::isAnyBypassed_{false};

void NativeLock::yieldToWaitingForks() {
    ForkLocks::instance().yieldToWaitingForks(*this);
}

void NativeLock::awaitBypassingFork() {
    ForkLocks::instance().awaitBypassingFork();
}

/// Waits for the lock, but gives up after a timeout if its holder changes nothing.
/// \return whether the caller holds it now
bool NativeLock::lockOrBypass() {
    do {
        const timespec end = timeOf(now() + BYPASS_TIMEOUT);
        if (pthread_mutex_clocklock(&mutex_, CLOCK_MONOTONIC, &end) == 0) {
            holder_.store(pthread_self(), std::memory_order_relaxed);
            ++count_;
            return true;
        }
    } while (!isInBlockingSection_);
    return false;
}

void NativeLock::awaitHolder() {
    if (tryLock()) {
        unlock();
    } else {
        ForkLocks::instance().awaitHolder(*this);
    }
}

} // namespace Platform
} // namespace ZAV
