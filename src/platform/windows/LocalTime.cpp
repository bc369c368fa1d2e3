#include "platform/Clock.h"

#include <ctime>
#include <windows.h>

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

namespace {

constexpr std::int64_t TICKS_PER_SECOND = 10000000;
constexpr std::int64_t SECONDS_FROM_1601_TO_1970 = 11644473600;

struct ChosenZone {
    enum Kind { RUNTIME, UTC, NAMED };
    Kind kind = RUNTIME;
    DYNAMIC_TIME_ZONE_INFORMATION zone = {}; ///< only for NAMED
};

ChosenZone& chosenZone() {
    static ChosenZone chosen;
    return chosen;
}

SYSTEMTIME toSystemTime(std::int64_t seconds) {
    const std::int64_t ticks = (seconds + SECONDS_FROM_1601_TO_1970) * TICKS_PER_SECOND;
    const FILETIME fileTime = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME time = {};
    FileTimeToSystemTime(&fileTime, &time);
    return time;
}

std::int64_t toSeconds(const SYSTEMTIME& time) {
    FILETIME fileTime = {};
    SystemTimeToFileTime(&time, &fileTime);
    const std::int64_t ticks =
        (static_cast<std::int64_t>(fileTime.dwHighDateTime) << 32) | fileTime.dwLowDateTime;
    return ticks / TICKS_PER_SECOND - SECONDS_FROM_1601_TO_1970;
}

bool findZone(const std::wstring& name, DYNAMIC_TIME_ZONE_INFORMATION& zone) {
    for (DWORD index = 0; EnumDynamicTimeZoneInformation(index, &zone) == ERROR_SUCCESS; ++index) {
        if (name == zone.TimeZoneKeyName) {
            return true;
        }
    }
    return false;
}

/// Uses the zone's rules for that year.
std::int64_t namedOffset(std::int64_t seconds) {
    const SYSTEMTIME utc = toSystemTime(seconds);
    TIME_ZONE_INFORMATION ofYear;
    SYSTEMTIME local;
    const bool isConverted = GetTimeZoneInformationForYear(utc.wYear, &chosenZone().zone, &ofYear) &&
                             SystemTimeToTzSpecificLocalTime(&ofYear, &utc, &local);
    return isConverted ? toSeconds(local) - seconds : 0;
}

/// Uses the C runtime's zone, in which the library writes its lines; it honours the TZ variable.
std::int64_t runtimeOffset(std::int64_t seconds) {
    const __time64_t time = seconds;
    std::tm local;
    return _localtime64_s(&local, &time) == 0 ? _mkgmtime64(&local) - seconds : 0;
}

} // namespace

bool useZone(const std::string& name) {
    ChosenZone chosen;
    chosen.kind = name == "UTC" ? ChosenZone::UTC : ChosenZone::NAMED;
    const bool isKnown =
        chosen.kind == ChosenZone::UTC || findZone(std::wstring(name.begin(), name.end()), chosen.zone);
    if (isKnown) {
        chosenZone() = chosen;
    }
    return isKnown;
}

std::int64_t utcOffset(std::int64_t seconds) {
    switch (chosenZone().kind) {
    case ChosenZone::RUNTIME:
        return runtimeOffset(seconds);
    case ChosenZone::UTC:
        return 0;
    case ChosenZone::NAMED:
        break;
    }
    return namedOffset(seconds);
}

} // namespace Platform
} // namespace ZAV
