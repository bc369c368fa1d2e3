#include "platform/LocalTime.h"

#include <ctime>

namespace ZAV {
namespace Platform {

TimeZone currentTimeZone() noexcept {
    return {timezone, daylight, {tzname[0], tzname[1]}};
}

CalendarTime toLocalTime(std::int64_t seconds) {
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm local;
    if (localtime_r(&time, &local) == nullptr) {
        return CalendarTime{};
    }
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

} // namespace Platform
} // namespace ZAV
