#pragma once

#include "log/layout/LineLayout.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

// How the values of the configuration are understood. What a reader does not understand it says, so that the
// builders can fall back quietly, and a checker can complain.

/// A number of which only the beginning of a text counts.
template <typename Number>
struct LeadingNumber {
    Number value = 0;      ///< the nearest bound if the number is out of range
    bool isNumber = false; ///< whether the text begins with a number at all, behind blanks
    bool isWhole = false;  ///< whether nothing stands behind the number
    bool isCut = false;    ///< whether the number is out of range
};

/// A negative number counts as the huge one that unsigned arithmetic makes of it.
LeadingNumber<std::uint64_t> readLeadingUnsigned(const std::string& text);
LeadingNumber<std::int32_t> readLeadingSigned(const std::string& text);

/// \return the bytes of "B", "KB", "MB" or "GB"; nothing for another word, which counts as "B"
std::optional<std::uint64_t> readSizeUnit(const std::string& word);
constexpr std::uint64_t DEFAULT_SIZE_UNIT = 1;

/// \return the unit that "m", "h" or "d" names; nothing for another word, which counts as "m"
std::optional<Util::TimeUtils::TimeUnit> readLifetimeUnit(const std::string& word);
constexpr Util::TimeUtils::TimeUnit DEFAULT_LIFETIME_UNIT = Util::TimeUtils::MIN;

/// \return the unit that "msec", "sec", "min", "hour" or "day" names; nothing for another word, which counts
///         as "min"
std::optional<Util::TimeUtils::TimeUnit> readPeriodUnit(const std::string& word);
constexpr Util::TimeUtils::TimeUnit DEFAULT_PERIOD_UNIT = Util::TimeUtils::MIN;

/// Reads a count and a unit, separated by spaces. Without a unit the count is one of minutes; what follows
/// the unit is ignored. A negative count gives what wrapping arithmetic makes of it.
/// \throw UtilException if the count is missing or no whole number
Util::TimeUtils::Time readPeriod(const std::string& text);

// Limits: 0 and negative ones are none, and one too large for its type is the largest. The unit is a word
// behind the number; what follows that is ignored, as it is in a period.

/// \return bytes; nothing without a whole number and a unit that `readSizeUnit` knows
std::optional<std::uint64_t> readSizeLimit(const std::string& text);

/// \return nothing without a whole number and a unit that `readPeriodUnit` knows
std::optional<Util::TimeUtils::Time> readTimeLimit(const std::string& text);

/// \return nothing if the text is no whole number
std::optional<std::uint64_t> readCountLimit(const std::string& text);

/// \return the permissions that up to four octal digits name, from 0 to 777; nothing for another text
std::optional<unsigned> readFileMode(const std::string& text);

/// \return what "true" and "false" say; nothing for another text
std::optional<bool> readBoolean(const std::string& text);

/// \throw UtilException with the text if it names no layout
LayoutName readLayout(const std::string& text);

/// \return the names of all columns
std::vector<std::string_view> columnNames();

/// Reads names of columns, separated by spaces.
/// \throw UtilException with the text if it names none, or if a name is no column's
std::vector<Column> readColumns(const std::string& text);

} // namespace Log
} // namespace ZAV
