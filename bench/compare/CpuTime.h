#pragma once

#include <ctime>

namespace Bench {

/// \return what all threads of the process have used of the processors so far
inline double cpuNanoseconds() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

} // namespace Bench
