#pragma once

#include "zav-util/TimeUtils.h"

#include <cstddef>

namespace ZAV {
namespace Util {
namespace TimeUtils {

/// Lengths of the two text forms of a `Time`.
constexpr std::size_t SECONDS_LENGTH = 19;
constexpr std::size_t TIME_LENGTH = 26;

/// Length of a time in UTC, as in "2026-05-07T12:03:27.123Z".
constexpr std::size_t UTC_LENGTH = 24;

/// Writes the text that `time.toSecondsString()` returns, without a terminating zero.
/// \param field room for `SECONDS_LENGTH` characters
/// \return the position after the last of them
char* writeSeconds(char* field, Time time);

/// Writes the text that `time.toString()` returns, without a terminating zero.
/// \param field room for `TIME_LENGTH` characters
/// \return the position after the last of them
char* writeTime(char* field, Time time);

/// Writes the time in UTC, to the millisecond.
/// \param field room for `UTC_LENGTH` characters
/// \return the position after the last of them
char* writeUtc(char* field, Time time);

} // namespace TimeUtils
} // namespace Util
} // namespace ZAV
