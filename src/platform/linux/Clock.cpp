#include "platform/Clock.h"

#include "CycleCounter.h"
#include "SystemClock.h"

namespace ZAV {
namespace Platform {

namespace {

constexpr std::uint64_t MILLISECOND = 1'000'000; // in nanoseconds

/// A reading of the system's clock, and how long its millisecond is known to last.
struct Reading {
    std::uint64_t milliseconds;
    std::uint64_t ticks;    ///< the cycle counter before the clock was read
    std::uint64_t lifetime; ///< in ticks from then on
};

/// The system may let its clock run faster by a tenth for a while, to correct it, and the counter's speed may
/// have been measured while it ran slower. A processor may read the counter a little before the program has
/// come so far.
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

/// Within a millisecond the counter alone is read, which takes less than half the time. However wrong the
/// counter may run, a reading is used for no more than about a millisecond of it; a clock that is set shows
/// in the next one.
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
