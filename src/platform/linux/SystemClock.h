#pragma once

#include <cstdint>
#include <ctime>

namespace ZAV {
namespace Platform {

/// \return what one of the system's clocks shows
inline std::uint64_t nanosecondsOf(clockid_t clock) {
    constexpr std::uint64_t NANOSECONDS = 1'000'000'000;
    timespec time = {};
    clock_gettime(clock, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * NANOSECONDS + static_cast<std::uint64_t>(time.tv_nsec);
}

} // namespace Platform
} // namespace ZAV
