#include "platform/StopSignal.h"

#include "platform/linux/StopDescriptor.h"

#include <csignal>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

int stopDescriptor_ = -1;

sigset_t stopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

bool isBroken(const pollfd& output) {
    return (output.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0;
}

} // namespace

int stopDescriptor() {
    return stopDescriptor_;
}

/// The signals stay pending for ever: a handler could not wake a `write` that has not begun to wait yet.
void catchStopSignals() {
    const sigset_t signals = stopSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    stopDescriptor_ = signalfd(-1, &signals, SFD_CLOEXEC);
}

bool isStopRequested() {
    sigset_t pending;
    return stopDescriptor_ >= 0 && sigpending(&pending) == 0 &&
           (sigismember(&pending, SIGINT) == 1 || sigismember(&pending, SIGTERM) == 1);
}

bool waitForStop(std::chrono::milliseconds time) {
    pollfd watched[] = {{stopDescriptor_, POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
    poll(watched, 2, static_cast<int>(time.count()));
    return isStopRequested() || isBroken(watched[1]);
}

} // namespace Platform
} // namespace ZAV
