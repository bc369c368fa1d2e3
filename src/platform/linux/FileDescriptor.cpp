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
    : error_(errno), mayRaise_(isSizeLimited || !hasPlace(descriptor)) {
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

/// Only a signal that was blocked before can be pending, and then it is somebody else's.
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

/// The signal goes to the thread that has written. Only a failed call can have raised it, so without an error
/// the system is not asked.
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
