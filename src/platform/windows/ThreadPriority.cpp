#include "platform/ThreadPriority.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

static_assert(THREAD_PRIORITY_LOWEST_VALUE == THREAD_PRIORITY_LOWEST &&
                  THREAD_PRIORITY_NORMAL_VALUE == THREAD_PRIORITY_NORMAL &&
                  THREAD_PRIORITY_HIGHEST_VALUE == THREAD_PRIORITY_HIGHEST,
              "the priorities are the system's own numbers");

int setCurrentThreadPriority(int priority) {
    if (SetThreadPriority(GetCurrentThread(), priority)) {
        return 0;
    }
    return static_cast<int>(GetLastError());
}

} // namespace Platform
} // namespace ZAV
