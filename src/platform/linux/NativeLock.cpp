#include "NativeLock.h"

namespace ZAV {
namespace Platform {

/// All locks of the library, which a fork has to deal with: in one list for each rule.
///
/// A lock may be made while another one is held, a logger's under the tree's for example. So the list of
/// those that are freed is taken after the locks that are awaited, and the list of the awaited ones, of which
/// none is made while another one is held, before them.
class AllLocks {
public:
    /// Never destroyed, since threads may still log while the process ends.
    static AllLocks& instance() {
        static AllLocks& locks = *new AllLocks;
        return locks;
    }

    void add(NativeLock& lock) { listOf(lock).add(lock); }
    void remove(NativeLock& lock) { listOf(lock).remove(lock); }

private:
    class List {
    public:
        void add(NativeLock& lock) {
            take();
            lock.next_ = first_;
            if (first_ != nullptr) {
                first_->previous_ = &lock;
            }
            first_ = &lock;
            release();
        }

        void remove(NativeLock& lock) {
            take();
            (lock.previous_ == nullptr ? first_ : lock.previous_->next_) = lock.next_;
            if (lock.next_ != nullptr) {
                lock.next_->previous_ = lock.previous_;
            }
            release();
        }

        void take() { pthread_mutex_lock(&mutex_); }
        void release() { pthread_mutex_unlock(&mutex_); }

        template <typename Function>
        void forEach(const Function& function) {
            for (NativeLock* lock = first_; lock != nullptr; lock = lock->next_) {
                function(*lock);
            }
        }

    private:
        pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
        NativeLock* first_ = nullptr;
    };

    AllLocks() { pthread_atfork(take, release, makeFree); }

    List& listOf(const NativeLock& lock) { return lock.rule_ == AWAITED_BY_FORK ? awaited_ : freed_; }

    static void take() {
        instance().awaited_.take();
        instance().awaited_.forEach([](NativeLock& lock) { lock.lock(); });
        instance().freed_.take();
    }

    static void release() {
        instance().freed_.release();
        instance().awaited_.forEach([](NativeLock& lock) { lock.unlock(); });
        instance().awaited_.release();
    }

    /// In the child: what its only thread holds, it goes on holding, since the call in which it forked will
    /// release it.
    static void makeFree() {
        instance().freed_.forEach([](NativeLock& lock) {
            if (!lock.isHeldByCaller()) {
                lock.makeFree();
            }
        });
        release();
    }

    List awaited_;
    List freed_;
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

/// Also a mutex of which nobody is known as the holder may be locked: a thread tells its name last when it
/// takes it, and takes it away first when it releases it.
void NativeLock::makeFree() {
    pthread_mutex_init(&mutex_, nullptr);
    holder_.store(NOBODY, std::memory_order_relaxed);
    count_ = 0;
}

} // namespace Platform
} // namespace ZAV
