#include "platform/SignalGuard.h"

#include <csignal>
#include <initializer_list>

namespace ZAV {
namespace Platform {

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

} // namespace Platform
} // namespace ZAV
