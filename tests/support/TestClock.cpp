#include "TestClock.h"

#include "platform/Clock.h"

#include <atomic>

namespace ZAV {

namespace {

std::atomic<std::uint64_t> milliseconds{1367935407123};
thread_local std::size_t readings = 0;

} // namespace

std::uint64_t Platform::currentMilliseconds() {
    ++readings;
    return milliseconds;
}

void TestSupport::setClock(Util::TimeUtils::Time time) {
    milliseconds = time.microseconds() / 1000;
}

std::size_t TestSupport::clockReadingsOfThisThread() {
    return readings;
}

} // namespace ZAV
