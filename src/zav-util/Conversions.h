#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Makes the compiler check a function's arguments against its pattern, as for `printf`; the two numbers are
/// the positions of the pattern and of its first argument.
#if defined(__GNUC__)
#define ZAV_LOG_PRINTF_LIKE(pattern, first) __attribute__((format(printf, pattern, first)))
#else
#define ZAV_LOG_PRINTF_LIKE(pattern, first)
#endif

namespace ZAV {
namespace Util {

/// Converts a text to a number. White space and then a sign may precede the digits; an empty text gives 0. A
/// number out of range gives the nearest bound.
/// \throw UtilException if the text contains anything else
std::int32_t toInteger(const std::string& text);

/// \return the number in decimal digits, without padding or grouping
std::string toString(std::uint64_t number);

/// \return the number in decimal digits, without padding or grouping, "-" first if it is negative
std::string toString(std::int64_t number);

/// Formats as `printf` does.
/// \return the formatted text, truncated to 1,023 characters
std::string format(const char* pattern, ...) ZAV_LOG_PRINTF_LIKE(1, 2);

/// Splits a text at a separator. Several separators in a row count as one, and no piece is empty, not even
/// where the text begins or ends with a separator.
std::vector<std::string> split(const std::string& text, char separator);

} // namespace Util
} // namespace ZAV
