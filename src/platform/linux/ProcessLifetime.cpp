#include "platform/ProcessLifetime.h"

#include "platform/CancellationGuard.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

void atProcessEnd(void (*handler)()) {
    std::atexit(handler);
}

/// The system's line about the process begins "pid (name) state", where the name may hold anything. The state
/// is that of the first thread; once that has ended, it still counts as a thread.
bool isOnlyThread() noexcept {
    const NoCancellation guard;
    char line[1024];
    const int file = ::open("/proc/self/stat", O_RDONLY | O_CLOEXEC);
    const ssize_t length = file < 0 ? -1 : ::read(file, line, sizeof line - 1);
    if (file >= 0) {
        ::close(file);
    }
    if (length <= 0) {
        return false;
    }
    line[length] = '\0';
    const char* const nameEnd = std::strrchr(line, ')');
    char firstState = '\0';
    long threads = 0;
    const bool isRead =
        nameEnd != nullptr &&
        std::sscanf(nameEnd, ") %c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %*u %*u %*d %*d %*d %*d %ld",
                    &firstState, &threads) == 2;
    return isRead && threads - (firstState == 'Z' ? 1 : 0) == 1;
}

void keepLibraryLoaded() {
    // The library is linked with "-z nodelete", so nothing unloads it anyway.
}

} // namespace Platform
} // namespace ZAV
