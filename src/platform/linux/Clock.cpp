#include "platform/Clock.h"

#include <ctime>

namespace ZAV {
namespace Platform {

std::uint64_t currentMilliseconds() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000000;
}

} // namespace Platform
} // namespace ZAV
