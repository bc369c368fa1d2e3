#pragma once

#include <cstdint>

namespace ZAV {
namespace Platform {

/// A calendar date and a time of day in the process's time zone.
struct CalendarTime {
    int year;   ///< full year, for example 2013
    int month;  ///< 1 to 12
    int day;    ///< 1 to 31
    int hour;   ///< 0 to 23
    int minute; ///< 0 to 59
    int second; ///< 0 to 60
};

/// Converts a point in time by the time zone that the process has at this moment.
/// \param seconds seconds since 1970-01-01 00:00:00 UTC
/// \return the local calendar time; all zero if the system cannot convert that point in time
CalendarTime toLocalTime(std::int64_t seconds);

} // namespace Platform
} // namespace ZAV
