#include "CycleCounter.h"

#include "SystemClock.h"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#if defined(__x86_64__)
#include <x86intrin.h>
#endif

namespace ZAV {
namespace Platform {

namespace {

constexpr std::uint64_t SHORTEST_MEASUREMENT = 4000; // microseconds

/// Ticks in a microsecond that no processor comes near. A counter that began anew, as when a machine was
/// suspended, seems to have run far faster.
constexpr std::uint64_t HIGHEST_SPEED = 10'000;

#if defined(__x86_64__)
constexpr bool HAS_COUNTER = true;
#else
constexpr bool HAS_COUNTER = false;
#endif

/// The system takes the time from the counter itself only as long as it finds it steady.
bool isClockOfSystem() {
    constexpr char COUNTER[] = "tsc\n";
    char source[sizeof COUNTER] = "";
    const int descriptor =
        ::open("/sys/devices/system/clocksource/clocksource0/current_clocksource", O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const ssize_t length = ::read(descriptor, source, sizeof source);
    ::close(descriptor);
    return length == sizeof COUNTER - 1 && std::memcmp(source, COUNTER, sizeof COUNTER - 1) == 0;
}

/// What the speed is measured from. All 0 before the library is loaded.
const struct Beginning {
    bool isSteady = HAS_COUNTER && isClockOfSystem();
    std::uint64_t microseconds = nanosecondsOf(CLOCK_BOOTTIME) / 1000;
    std::uint64_t ticks = isSteady ? CycleCounter::read() : 0;
} beginning;

std::atomic<std::uint64_t> knownSpeed{0};
std::atomic<std::uint64_t> measuredTicks{0}; ///< over which that was measured

/// The counter is read last at the beginning and before this, so that a thread which loses the processor in
/// between makes the speed too low, and never too high.
void measureSpeed(std::uint64_t ticks) {
    const std::uint64_t microseconds = nanosecondsOf(CLOCK_BOOTTIME) / 1000 - beginning.microseconds;
    const std::uint64_t speed = ticks / (microseconds + 1);
    if (microseconds >= SHORTEST_MEASUREMENT && speed <= HIGHEST_SPEED) {
        knownSpeed.store(speed, std::memory_order_relaxed);
        measuredTicks.store(ticks, std::memory_order_relaxed);
    }
}

} // namespace

bool CycleCounter::isSteady() {
    return beginning.isSteady;
}

std::uint64_t CycleCounter::read() {
#if defined(__x86_64__)
    return __rdtsc();
#else
    return 0;
#endif
}

/// It is measured again whenever the counter has gone twice as far, and so becomes exact where it was not.
std::uint64_t CycleCounter::ticksPerMicrosecond() {
    const std::uint64_t ticks = read() - beginning.ticks;
    if (ticks / 2 >= measuredTicks.load(std::memory_order_relaxed)) {
        measureSpeed(ticks);
    }
    return knownSpeed.load(std::memory_order_relaxed);
}

} // namespace Platform
} // namespace ZAV
