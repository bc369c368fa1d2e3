#include "platform/Threads.h"

#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

bool sleepBriefly() noexcept {
    const timespec duration = {0, 50'000}; // to which the system adds as much
    nanosleep(&duration, nullptr);
    return true;
}

std::uint64_t currentThreadId() noexcept {
    return static_cast<std::uint64_t>(syscall(SYS_gettid)); // older C libraries have no function for it
}

} // namespace Platform
} // namespace ZAV
