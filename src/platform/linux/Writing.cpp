#include "platform/linux/Writing.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

/// The C library's function would also end a thread that is being cancelled. To keep it from that costs a
/// fiftieth of the call.
ssize_t writeUncancelled(int descriptor, const char* text, std::size_t size) {
    return ::syscall(SYS_write, descriptor, text, size);
}

/// Another process can make a pipe or terminal that it shares with this one non-blocking.
bool waitUntilWritable(int descriptor) {
    const NoCancellation guard;
    pollfd watched = {descriptor, POLLOUT, 0};
    return poll(&watched, 1, -1) == 1 || errno == EINTR;
}

/// The system knows a place in a file, and none in a pipe, a socket or a terminal. It may be another one with
/// each write, and to ask for that costs a tenth of blocking a signal.
bool hasPlace(int descriptor) {
    return lseek(descriptor, 0, SEEK_CUR) >= 0;
}

sigset_t brokenPipe() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    return signals;
}

bool isPending(int signal) {
    sigset_t pending;
    return sigpending(&pending) == 0 && sigismember(&pending, signal) == 1;
}

} // namespace

std::size_t writeAll(int descriptor, const char* text, std::size_t size) {
    std::size_t taken = 0;
    while (taken < size) {
        const ssize_t written = writeUncancelled(descriptor, text + taken, size - taken);
        if (written < 0 && (errno == EINTR || (errno == EAGAIN && waitUntilWritable(descriptor)))) {
            continue;
        }
        if (written <= 0) {
            break;
        }
        taken += static_cast<std::size_t>(written);
    }
    return taken;
}

BrokenPipeGuard::BrokenPipeGuard(int descriptor) noexcept : error_(errno), mayBreak_(!hasPlace(descriptor)) {
    if (mayBreak_) {
        block();
    }
}

BrokenPipeGuard::~BrokenPipeGuard() {
    if (mayBreak_) {
        unblock();
    }
    errno = error_;
}

void BrokenPipeGuard::block() noexcept {
    const sigset_t signals = brokenPipe();
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &signals, &before);
    wasBlocked_ = sigismember(&before, SIGPIPE) == 1;
    wasPending_ = wasBlocked_ && isPending(SIGPIPE);
    errno = 0;
}

/// The signal goes to the thread that has written. Only a failed call can have raised it, so without an error
/// the system is not asked.
void BrokenPipeGuard::unblock() noexcept {
    const sigset_t signals = brokenPipe();
    if (errno != 0 && !wasPending_) {
        const timespec noTime = {0, 0};
        sigtimedwait(&signals, nullptr, &noTime);
    }
    if (!wasBlocked_) {
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }
}

} // namespace Platform
} // namespace ZAV
