#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <initializer_list>
#include <poll.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

/// The C library's `write` is a cancellation point; disabling cancellation around it would add a fiftieth of
/// the call's cost.
ssize_t writeUncancelled(int descriptor, const char* text, std::size_t size) {
    return ::syscall(SYS_write, descriptor, text, size);
}

/// For a shared pipe or terminal that another process has made non-blocking.
bool waitUntilWritable(int descriptor) {
    const NoCancellation guard;
    pollfd watched = {descriptor, POLLOUT, 0};
    return poll(&watched, 1, -1) == 1 || errno == EINTR;
}

/// Pipes, sockets and terminals are not seekable. Checked at each write, since the target may change; that
/// costs a tenth of blocking a signal.
bool canSeek(int descriptor) {
    return lseek(descriptor, 0, SEEK_CUR) >= 0;
}

sigset_t signalsOfWrites() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    sigaddset(&signals, SIGXFSZ);
    return signals;
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

bool isFileSizeLimited() noexcept {
    rlimit limit;
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
}

WriteSignalGuard::WriteSignalGuard(int descriptor, bool isSizeLimited) noexcept
    : error_(errno), mayRaise_(isSizeLimited || !canSeek(descriptor)) {
    if (mayRaise_) {
        block();
    }
}

WriteSignalGuard::~WriteSignalGuard() {
    if (mayRaise_) {
        unblock();
    }
    errno = error_;
}

/// A signal that is pending already was blocked before and comes from somebody else.
void WriteSignalGuard::block() noexcept {
    own_ = signalsOfWrites();
    pthread_sigmask(SIG_BLOCK, &own_, &before_);
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
        sigset_t pending;
        if (sigismember(&before_, signal) == 1 && sigpending(&pending) == 0 &&
            sigismember(&pending, signal) == 1) {
            sigdelset(&own_, signal);
        }
    }
    errno = 0;
}

/// The signal is directed at the writing thread. Only a failed call can have raised it, so without an error
/// none is looked for.
void WriteSignalGuard::unblock() noexcept {
    if (errno != 0) {
        const timespec noTime = {0, 0};
        while (sigtimedwait(&own_, nullptr, &noTime) > 0) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

} // namespace Platform
} // namespace ZAV
