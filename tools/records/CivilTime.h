#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Converts a local time without its zone, as if it were UTC.
/// \param time begins with a time stamp, at least to the second
/// \return seconds since 1970-01-01 00:00:00
std::int64_t civilSeconds(std::string_view time);

/// \param time a time stamp
/// \return its microseconds within the second
std::int64_t civilFraction(std::string_view time);

/// \return the number of days of a month, from 1 to 12
int daysOfMonth(int year, int month);

/// \param microseconds since 1970-01-01 00:00:00
/// \return the text that `civilSeconds` reads, with six digits of a second
std::string civilText(std::int64_t microseconds);

} // namespace Tools
} // namespace ZAV
