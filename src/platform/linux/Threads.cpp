#include "platform/Threads.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <initializer_list>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

NoCancellation::NoCancellation() noexcept {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
}

NoCancellation::~NoCancellation() {
    pthread_setcancelstate(before_, nullptr);
}

void actOnCancellation() {
    pthread_testcancel();
}

struct NoSignals::Mask {
    sigset_t signals;
};

NoSignals::NoSignals() : before_(std::make_unique<Mask>()) {
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) {
        sigdelset(&blocked, fault);
    }
    pthread_sigmask(SIG_SETMASK, &blocked, &before_->signals);
}

NoSignals::~NoSignals() {
    pthread_sigmask(SIG_SETMASK, &before_->signals, nullptr);
}

bool hasFineTimer() noexcept {
    return true;
}

bool sleepBriefly() noexcept {
    const timespec duration = {0, 50'000}; // the default timer slack adds as much
    nanosleep(&duration, nullptr);
    return true;
}

std::uint64_t currentThreadId() noexcept {
    return static_cast<std::uint64_t>(syscall(SYS_gettid)); // older C libraries have no `gettid`
}

namespace {

constexpr int NICE_STEPS_PER_PRIORITY = 5;
constexpr int NICE_OF_LEAST_PRIORITY = 19;

id_t currentThread() {
    return static_cast<id_t>(gettid());
}

/// Priorities are relative to the process's nice value, that is, its first thread's.
int niceFor(int priority) {
    const int processNice = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    return std::min(processNice - priority * NICE_STEPS_PER_PRIORITY, NICE_OF_LEAST_PRIORITY);
}

} // namespace

int setCurrentThreadPriority(int priority) {
    const int currentNice = getpriority(PRIO_PROCESS, currentThread());
    int nice = niceFor(priority);
    while (setpriority(PRIO_PROCESS, currentThread(), nice) != 0) {
        if (errno != EACCES && errno != EPERM) {
            return errno;
        }
        if (++nice >= currentNice) {
            return 0;
        }
    }
    return 0;
}

ThreadSlot::ThreadSlot(void (*destroy)(void* object)) {
    pthread_key_t key = 0;
    isValid_ = pthread_key_create(&key, destroy) == 0;
    key_ = key;
}

void* ThreadSlot::get() const noexcept {
    return isValid_ ? pthread_getspecific(static_cast<pthread_key_t>(key_)) : nullptr;
}

bool ThreadSlot::set(void* object) noexcept {
    return isValid_ && pthread_setspecific(static_cast<pthread_key_t>(key_), object) == 0;
}

} // namespace Platform
} // namespace ZAV
