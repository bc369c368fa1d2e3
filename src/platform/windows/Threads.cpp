#include "platform/Threads.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

bool sleepBriefly() noexcept {
    return false; // the shortest sleep lasts for a tick of the system's timer
}

std::uint64_t currentThreadId() noexcept {
    return GetCurrentThreadId();
}

} // namespace Platform
} // namespace ZAV
