#pragma once

#include "log/layout/LineLayout.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

// Parsers for the values of the configuration. They report what they cannot parse, so that the library can
// fall back silently, and a checker can report an error.

/// A number at the beginning of a text.
template <typename Number>
struct LeadingNumber {
    Number value = 0;      ///< the nearest bound if the number is out of range
    bool isNumber = false; ///< whether the text begins with a number, after white space
    bool isWhole = false;  ///< whether nothing follows the number
    bool isCut = false;    ///< whether the number is out of range
};

/// A negative number wraps around, as in unsigned arithmetic.
LeadingNumber<std::uint64_t> readLeadingUnsigned(const std::string& text);
LeadingNumber<std::int32_t> readLeadingSigned(const std::string& text);

/// \return the number of bytes that "B", "KB", "MB" or "GB" names; nothing for another word, which counts as
///         "B"
std::optional<std::uint64_t> readSizeUnit(const std::string& word);
constexpr std::uint64_t DEFAULT_SIZE_UNIT = 1;

/// \return the unit that "m", "h" or "d" names; nothing for another word, which counts as "m"
std::optional<Util::TimeUtils::TimeUnit> readLifetimeUnit(const std::string& word);
constexpr Util::TimeUtils::TimeUnit DEFAULT_LIFETIME_UNIT = Util::TimeUtils::MIN;

/// \return the unit that "msec", "sec", "min", "hour" or "day" names; nothing for another word, which counts
///         as "min"
std::optional<Util::TimeUtils::TimeUnit> readPeriodUnit(const std::string& word);
constexpr Util::TimeUtils::TimeUnit DEFAULT_PERIOD_UNIT = Util::TimeUtils::MIN;

/// Reads a count and a unit, separated by spaces. Without a unit the count is in minutes; what follows the
/// unit is ignored. A negative count wraps around.
/// \throw UtilException if the count is missing or is not a whole number
Util::TimeUtils::Time readPeriod(const std::string& text);

// Limits: 0 and negative ones mean no limit and are returned as 0, and one too large for its type is returned
// as the largest. The unit is the word after the number; what follows it is ignored, as in a period.

/// \return bytes; nothing without a whole number and a unit that `readSizeUnit` knows
std::optional<std::uint64_t> readSizeLimit(const std::string& text);

/// \return nothing without a whole number and a unit that `readPeriodUnit` knows
std::optional<Util::TimeUtils::Time> readTimeLimit(const std::string& text);

/// \return nothing if the text is not a whole number
std::optional<std::uint64_t> readCountLimit(const std::string& text);

/// \return a count times its unit; on overflow the largest number, which is the nearest limit. Nothing without a number.
std::optional<std::uint64_t> readSize(const std::string& text, const std::string& unitName);

/// \return a count times its unit; no limit, which is 0, if the count is 0 or below. Nothing without a number.
std::optional<Util::TimeUtils::Time> readLifetime(const std::string& text, const std::string& unitName);

/// \return the permissions that up to four octal digits name, from 0 to 777; nothing for another text
std::optional<unsigned> readFileMode(const std::string& text);

/// \return the value of "true" or "false"; nothing for another text
std::optional<bool> readBoolean(const std::string& text);

/// \return the standard stream that "cout", "cerr" or "clog" names; the first one for another text
std::ostream* readStream(const std::string& text);

/// \throw UtilException with the text if it names no layout
LayoutName readLayout(const std::string& text);

/// \return the names of all columns
std::vector<std::string_view> columnNames();

/// Reads names of columns, separated by spaces.
/// \throw UtilException with the text if it names no column, or if a name is unknown
std::vector<Column> readColumns(const std::string& text);

/// When a file is rolled regardless of its size, in local time.
enum class RollMoment { NEVER, HOUR, MIDNIGHT };

/// \return the moment that "hour" or "midnight" names; nothing for another text
std::optional<RollMoment> readRollMoment(const std::string& text);

/// \return whether "gzip" or "none" asks for compression; nothing for another text
std::optional<bool> readCompression(const std::string& text);

} // namespace Log
} // namespace ZAV
