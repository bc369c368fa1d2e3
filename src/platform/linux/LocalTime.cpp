#include "platform/LocalTime.h"

#include "platform/CriticalSection.h"

#include <ctime>

namespace ZAV {
namespace Platform {

TimeZone currentTimeZone() noexcept {
    return {timezone, daylight, {tzname[0], tzname[1]}};
}

namespace {

/// The system's own lock in `localtime_r` would stay locked in a child that is forked meanwhile.
CriticalSection& conversionLock() {
    static CriticalSection& lock = *new CriticalSection(AWAITED_BY_FORK);
    return lock;
}

/// So that no thread makes it while another one forks.
const CriticalSection& madeAtLoad = conversionLock();

} // namespace

CalendarTime toLocalTime(std::int64_t seconds) {
    const ScopedLock lock(conversionLock());
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm local;
    if (localtime_r(&time, &local) == nullptr) {
        return CalendarTime{};
    }
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

} // namespace Platform
} // namespace ZAV
