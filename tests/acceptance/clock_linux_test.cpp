#include "zav-util/TimeUtils.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>

namespace {

using namespace std::chrono;

std::uint64_t systemsMilliseconds() {
    return static_cast<std::uint64_t>(
        duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
}

/// \return how many of many readings, including ones at the change of a millisecond, are not between the
///         system clock's readings before and after
std::size_t countWrongReadings() {
    constexpr std::uint64_t MILLISECONDS = 50; // the library calibrates the cycle counter meanwhile
    std::size_t wrong = 0;
    const std::uint64_t begin = systemsMilliseconds();
    for (std::uint64_t before = begin; before < begin + MILLISECONDS;) {
        const std::uint64_t reading = ZAV::Util::TimeUtils::Time::now().microseconds();
        const std::uint64_t after = systemsMilliseconds();
        wrong += reading < before * 1000 || reading > after * 1000 ? 1 : 0;
        before = after;
    }
    return wrong;
}

} // namespace

TEST(Clock, ShowsTheMillisecondOfTheSystemInEveryThread) {
    auto other = std::async(std::launch::async, countWrongReadings);
    EXPECT_EQ(countWrongReadings(), 0U);
    EXPECT_EQ(other.get(), 0U);
}
