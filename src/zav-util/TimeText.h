#pragma once

#include "zav-util/TimeUtils.h"

#include <cstddef>

namespace ZAV {
namespace Util {
namespace TimeUtils {

/// Lengths of the two text forms of a `Time`.
constexpr std::size_t SECONDS_LENGTH = 19;
constexpr std::size_t TIME_LENGTH = 26;

/// Writes what `time.toSecondsString()` gives, without a terminating zero.
/// \param field room for `SECONDS_LENGTH` characters
/// \return the place behind them
char* writeSeconds(char* field, Time time);

/// Writes what `time.toString()` gives, without a terminating zero.
/// \param field room for `TIME_LENGTH` characters
/// \return the place behind them
char* writeTime(char* field, Time time);

} // namespace TimeUtils
} // namespace Util
} // namespace ZAV
