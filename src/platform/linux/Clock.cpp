#include "platform/Clock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

#if defined(__x86_64__)
#include <x86intrin.h>
#endif

namespace ZAV {
namespace Platform {

namespace {

/// \return the time of one of the system's clocks
std::uint64_t nanosecondsOf(clockid_t clock) {
    constexpr std::uint64_t NANOSECONDS = 1'000'000'000;
    timespec time = {};
    clock_gettime(clock, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * NANOSECONDS + static_cast<std::uint64_t>(time.tv_nsec);
}

#if defined(__x86_64__)
constexpr bool HAS_COUNTER = true;
#else
constexpr bool HAS_COUNTER = false;
#endif

/// The kernel uses the counter as its clock source only while it considers it stable.
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

/// The processor's cycle counter; reading it is several times as fast as reading the system's clock.
namespace CycleCounter {

constexpr std::uint64_t SHORTEST_MEASUREMENT = 4000; // microseconds

/// Ticks per microsecond, far above any processor's. A counter that was reset, for example by a suspend,
/// appears to have run much faster.
constexpr std::uint64_t HIGHEST_SPEED = 10'000;

/// \return the counter's current value; 0 where there is none
std::uint64_t read() {
#if defined(__x86_64__)
    return __rdtsc();
#else
    return 0;
#endif
}

/// The start of the speed measurement. All 0 before the library is loaded.
const struct Beginning {
    bool isSteady = HAS_COUNTER && isClockOfSystem();
    std::uint64_t microseconds = nanosecondsOf(CLOCK_BOOTTIME) / 1000;
    std::uint64_t ticks = isSteady ? read() : 0;
} beginning;

std::atomic<std::uint64_t> knownSpeed{0};
std::atomic<std::uint64_t> measuredTicks{0}; ///< length of the measurement that gave it

/// At the start of the measurement the counter is read after the clock, at its end before it, so that a
/// thread preempted in between makes the speed too low, never too high.
void measureSpeed(std::uint64_t ticks) {
    const std::uint64_t microseconds = nanosecondsOf(CLOCK_BOOTTIME) / 1000 - beginning.microseconds;
    const std::uint64_t speed = ticks / (microseconds + 1);
    if (microseconds >= SHORTEST_MEASUREMENT && speed <= HIGHEST_SPEED) {
        knownSpeed.store(speed, std::memory_order_relaxed);
        measuredTicks.store(ticks, std::memory_order_relaxed);
    }
}

/// \return whether the counter runs at one constant speed on all processors, according to the kernel when the library
///         was loaded; false if there is no counter
bool isSteady() {
    return beginning.isSteady;
}

/// \return ticks per microsecond, too low rather than too high; 0 for the first milliseconds after the library was
///         loaded. Measured again each time the elapsed ticks have doubled, so that it becomes more exact.
std::uint64_t ticksPerMicrosecond() {
    const std::uint64_t ticks = read() - beginning.ticks;
    if (ticks / 2 >= measuredTicks.load(std::memory_order_relaxed)) {
        measureSpeed(ticks);
    }
    return knownSpeed.load(std::memory_order_relaxed);
}

} // namespace CycleCounter

constexpr std::uint64_t MILLISECOND = 1'000'000; // in nanoseconds

/// A reading of the system's clock, and how long its millisecond is certain to last.
struct Reading {
    std::uint64_t milliseconds;
    std::uint64_t ticks;    ///< the cycle counter before the clock was read
    std::uint64_t lifetime; ///< in ticks from `ticks` on
};

/// The margin covers: the system may speed its clock up by a tenth to correct it; the counter's speed may
/// have been measured while the clock ran slow; and a processor may read the counter a little early, out of
/// order.
std::uint64_t certainMicroseconds(std::uint64_t nanosecondsToNext) {
    constexpr std::uint64_t UNCERTAIN = 2000;
    constexpr std::uint64_t QUARTERS = 4;
    const std::uint64_t uncertain = UNCERTAIN + nanosecondsToNext / QUARTERS;
    return nanosecondsToNext > uncertain ? (nanosecondsToNext - uncertain) / 1000 : 0;
}

Reading readClock(std::uint64_t ticks) {
    const std::uint64_t now = nanosecondsOf(CLOCK_REALTIME);
    const std::uint64_t certain = certainMicroseconds(MILLISECOND - now % MILLISECOND);
    return {now / MILLISECOND, ticks, certain * CycleCounter::ticksPerMicrosecond()};
}

thread_local Reading lastReading{};

} // namespace

/// Within a millisecond only the counter is read, which takes less than half the time. However wrong the
/// counter is, a reading is used for at most about a millisecond of counter time; if the clock is set, the
/// next reading shows it.
std::uint64_t currentMilliseconds() {
    if (!CycleCounter::isSteady()) {
        return nanosecondsOf(CLOCK_REALTIME) / MILLISECOND;
    }
    const std::uint64_t ticks = CycleCounter::read();
    Reading& last = lastReading;
    if (ticks - last.ticks >= last.lifetime) {
        last = readClock(ticks);
    }
    return last.milliseconds;
}

} // namespace Platform
} // namespace ZAV
