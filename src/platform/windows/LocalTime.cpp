#include "platform/LocalTime.h"

#include <ctime>

namespace ZAV {
namespace Platform {

TimeZone currentTimeZone() noexcept {
    return {_timezone, _daylight, {_tzname[0], _tzname[1]}};
}

CalendarTime toLocalTime(std::int64_t seconds) {
    const __time64_t time = seconds;
    std::tm local;
    if (_localtime64_s(&local, &time) != 0) {
        return CalendarTime{};
    }
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

} // namespace Platform
} // namespace ZAV
