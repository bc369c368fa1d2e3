#include "platform/ThreadPriority.h"

#include <algorithm>
#include <cerrno>
#include <sys/resource.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr int NICE_STEPS_PER_PRIORITY = 5;
constexpr int NICE_OF_LEAST_PRIORITY = 19;

id_t currentThread() {
    return static_cast<id_t>(gettid());
}

/// Priorities are relative to the process's own nice value, which is that of its first thread.
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

} // namespace Platform
} // namespace ZAV
