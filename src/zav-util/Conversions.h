#pragma once

#include "platform/PrintfLike.h"

#include <cstdint>
#include <string>

namespace ZAV {
namespace Util {

/// Converts the whole of a text to a number. Blanks may lead, a sign may follow them; an empty text gives 0.
/// A number outside the range gives the nearest bound.
/// \throw UtilException if anything but a number remains
std::int32_t toInteger(const std::string& text);

/// \return the number in decimal digits, without padding or grouping
std::string toString(std::uint64_t number);

/// \return the number in decimal digits, without padding or grouping, "-" first if it is negative
std::string toString(std::int64_t number);

/// Formats as `printf` does.
/// \return the formatted text, cut to 1,023 characters
std::string format(const char* pattern, ...) ZAV_LOG_PRINTF_LIKE(1, 2);

} // namespace Util
} // namespace ZAV
