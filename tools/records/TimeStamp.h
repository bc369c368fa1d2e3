#pragma once

#include <cstddef>
#include <string_view>

namespace ZAV {
namespace Tools {

/// The length of a line's time, as in "2013.05.07 14:03:27:123000". Two such texts compare as their times do.
constexpr std::size_t TIME_STAMP_LENGTH = 26;

/// \param line a line with or without its end
/// \return true if it begins with a time that is followed by a blank or the end of the line
bool startsWithTime(std::string_view line);

} // namespace Tools
} // namespace ZAV
