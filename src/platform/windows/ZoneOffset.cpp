#include "platform/ZoneOffset.h"

#include <ctime>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr std::int64_t TICKS_PER_SECOND = 10000000;
constexpr std::int64_t SECONDS_FROM_1601_TO_1970 = 11644473600;

struct ChosenZone {
    bool isSet = false;
    DYNAMIC_TIME_ZONE_INFORMATION zone = {};
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

/// The zone that the library's own lines were written in: the C runtime's, which also heeds the variable TZ.
std::int64_t runtimeOffset(std::int64_t seconds) {
    const __time64_t time = seconds;
    std::tm local;
    return _localtime64_s(&local, &time) == 0 ? _mkgmtime64(&local) - seconds : 0;
}

} // namespace

bool useZone(const std::string& name) {
    ChosenZone chosen;
    chosen.isSet = true;
    const bool isUtc = name == "UTC"; // a zone without an offset, which the empty one is
    if (!isUtc && !findZone(std::wstring(name.begin(), name.end()), chosen.zone)) {
        return false;
    }
    chosenZone() = chosen;
    return true;
}

std::int64_t utcOffset(std::int64_t seconds) {
    if (!chosenZone().isSet) {
        return runtimeOffset(seconds);
    }
    const SYSTEMTIME utc = toSystemTime(seconds);
    SYSTEMTIME local;
    if (!SystemTimeToTzSpecificLocalTimeEx(&chosenZone().zone, &utc, &local)) {
        return 0;
    }
    return toSeconds(local) - seconds;
}

} // namespace Platform
} // namespace ZAV
