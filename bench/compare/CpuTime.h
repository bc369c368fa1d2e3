#pragma once

#include <ctime>

namespace Bench {

inline double nanosecondsOf(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/// \return the processor time used by all threads of the process so far
inline double cpuNanoseconds() {
    return nanosecondsOf(CLOCK_PROCESS_CPUTIME_ID);
}

/// \return the same without the calling thread
inline double cpuNanosecondsOfOtherThreads() {
    return cpuNanoseconds() - nanosecondsOf(CLOCK_THREAD_CPUTIME_ID);
}

} // namespace Bench
