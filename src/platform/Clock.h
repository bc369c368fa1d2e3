#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace ZAV {
namespace Platform {

/// Reads the system's clock.
/// \return whole milliseconds since 1970-01-01 00:00:00 UTC
std::uint64_t currentMilliseconds();

/// A calendar date and a time of day in the process's time zone.
struct CalendarTime {
    int year;   ///< full year, for example 2013
    int month;  ///< 1 to 12
    int day;    ///< 1 to 31
    int hour;   ///< 0 to 23
    int minute; ///< 0 to 59
    int second; ///< 0 to 60
};

/// What the system says about the process's time zone. As long as it compares equal, `toLocalTime` gives the
/// same results. Zones that differ only in the days on which daylight-saving time begins or ends cannot be
/// distinguished.
struct TimeZone {
    long offset;                      ///< seconds west of UTC
    int daylight;                     ///< 0 if the zone never has daylight-saving time
    std::array<const char*, 2> names; ///< compared by address: the system keeps one copy of each name

    friend bool operator==(const TimeZone& a, const TimeZone& b) noexcept {
        return a.offset == b.offset && a.daylight == b.daylight && a.names == b.names;
    }
};

/// \return the process's current time zone; costs a few memory reads
TimeZone currentTimeZone() noexcept;

/// Converts a point in time to local time in the process's current time zone.
/// \param seconds seconds since 1970-01-01 00:00:00 UTC
/// \return the local calendar time; all zero if the system cannot convert that point in time
CalendarTime toLocalTime(std::int64_t seconds);

// Calendar arithmetic without a time zone; the system's own conversion takes a lock even for that.

/// \param time of the year 1 or later
/// \return seconds since 1970-01-01 00:00:00 in the same zone, with 86,400 seconds per day
std::int64_t toSeconds(const CalendarTime& time);

/// The inverse of `toSeconds`.
CalendarTime toCalendarTime(std::int64_t seconds);

/// Sets this process's time zone for `utcOffset`, on Linux for all local times. On a system with its own list
/// of zones (Windows), the name is from that list.
/// \return false, and nothing is changed, if the system does not know the zone
bool useZone(const std::string& name);

/// \param seconds seconds since 1970-01-01 00:00:00 UTC
/// \return how many seconds the process's zone is ahead of UTC at that time
std::int64_t utcOffset(std::int64_t seconds);

} // namespace Platform
} // namespace ZAV
