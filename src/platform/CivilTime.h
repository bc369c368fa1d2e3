#pragma once

#include "platform/LocalTime.h"

#include <cstdint>

namespace ZAV {
namespace Platform {

// The calendar without a time zone, since the system's own conversion takes a lock for that, too.

/// \param time of the year 1 or later
/// \return seconds since 1970-01-01 00:00:00 of the same zone, of which each day has 86,400
std::int64_t toSeconds(const CalendarTime& time);

/// The reverse.
CalendarTime toCalendarTime(std::int64_t seconds);

} // namespace Platform
} // namespace ZAV
