#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The times in the lines of log files.

namespace ZAV {
namespace Tools {

/// The length of a line's time, as in "2013.05.07 14:03:27:123000". Two such texts compare as their times do.
constexpr std::size_t TIME_STAMP_LENGTH = 26;

/// \param line a line with or without its end
/// \return true if it begins with a time that is followed by a blank or the end of the line
bool startsWithTime(std::string_view line);

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

/// The last microsecond of the year 9999, since 1970-01-01 00:00:00.
constexpr std::int64_t LATEST_TIME = INT64_C(253402300799999999);

/// Reads a point in time as lines of `json` and the option `--json` show it.
/// \param text "2026-05-07T12:03:27.123Z", with any fraction or none, or with an offset as in "+02:00"
/// \return microseconds since 1970-01-01 00:00:00 UTC; nothing for another text, or for a time before that or after
///         `LATEST_TIME`
std::optional<std::int64_t> readIsoTime(std::string_view text);

} // namespace Tools
} // namespace ZAV
