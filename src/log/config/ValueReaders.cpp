#include "log/config/ValueReaders.h"

#include "zav-util/Conversions.h"
#include "zav-util/UtilException.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iostream>
#include <iterator>
#include <limits>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace ZAV {
namespace Log {

using namespace Util::TimeUtils;

namespace {

/// Reads what a stream would, but without one: constructing it takes a lock if a global locale is set, for
/// which a forked child might wait for ever. A number out of range becomes the nearest bound; an unsigned one
/// may have a minus sign.
template <typename Number>
LeadingNumber<Number> readLeadingNumber(const std::string& text) {
    const std::string_view digits =
        std::string_view(text).substr(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool hasMinus = !digits.empty() && digits.front() == '-';
    const bool hasSign = hasMinus || (!digits.empty() && digits.front() == '+');
    const char* const end = digits.data() + digits.size();
    std::uint64_t magnitude = 0;
    const std::from_chars_result read = std::from_chars(digits.data() + (hasSign ? 1 : 0), end, magnitude);
    LeadingNumber<Number> number;
    if (read.ec == std::errc::invalid_argument) {
        return number;
    }
    constexpr std::uint64_t MAX = std::numeric_limits<Number>::max();
    const bool isBelowZero = hasMinus && std::is_signed_v<Number>;
    number.isNumber = true;
    number.isWhole = read.ptr == end;
    number.isCut = read.ec == std::errc::result_out_of_range || magnitude > MAX + (isBelowZero ? 1 : 0);
    if (number.isCut) {
        number.value = isBelowZero ? std::numeric_limits<Number>::min() : std::numeric_limits<Number>::max();
    } else {
        number.value = static_cast<Number>(hasMinus ? 0 - magnitude : magnitude);
    }
    return number;
}

/// \return the value that a name stands for
/// \throw UtilException with the text if the name is unknown
template <typename Value, std::size_t SIZE>
Value valueNamed(std::string_view name, const std::pair<std::string_view, Value> (&named)[SIZE],
                 const std::string& text) {
    const auto* const found = std::find_if(std::begin(named), std::end(named),
                                           [&](const auto& entry) { return entry.first == name; });
    if (found == std::end(named)) {
        throw Util::UtilException(text);
    }
    return found->second;
}

constexpr std::pair<std::string_view, Column> COLUMNS[] = {
    {"time", Column::TIME},       {"utc", Column::UTC},       {"level", Column::LEVEL},
    {"logger", Column::LOGGER},   {"thread", Column::THREAD}, {"process", Column::PROCESS},
    {"pid", Column::PID},         {"host", Column::HOST},     {"place", Column::PLACE},
    {"context", Column::CONTEXT}, {"values", Column::VALUES}, {"message", Column::MESSAGE},
    {"text", Column::TEXT},
};

/// \param unitOf returns the unit that a word names, or nothing
template <typename UnitOf>
std::optional<std::uint64_t> readLimit(const std::string& text, UnitOf unitOf) {
    const std::vector<std::string> pieces = Util::split(text, ' ');
    if (pieces.size() < 2) {
        return std::nullopt;
    }
    const std::optional<std::uint64_t> count = readCountLimit(pieces[0]);
    const std::optional<std::uint64_t> unit = unitOf(pieces[1]);
    if (!count || !unit) {
        return std::nullopt;
    }
    constexpr std::uint64_t LARGEST = std::numeric_limits<std::uint64_t>::max();
    return *count > LARGEST / *unit ? LARGEST : *count * *unit;
}

} // namespace

LeadingNumber<std::uint64_t> readLeadingUnsigned(const std::string& text) {
    return readLeadingNumber<std::uint64_t>(text);
}

LeadingNumber<std::int32_t> readLeadingSigned(const std::string& text) {
    return readLeadingNumber<std::int32_t>(text);
}

std::optional<std::uint64_t> readSizeUnit(const std::string& word) {
    constexpr std::uint64_t KILO = 1024;
    if (word == "B") {
        return 1;
    }
    if (word == "KB") {
        return KILO;
    }
    if (word == "MB") {
        return KILO * KILO;
    }
    return word == "GB" ? std::optional<std::uint64_t>(KILO * KILO * KILO) : std::nullopt;
}

std::optional<TimeUnit> readLifetimeUnit(const std::string& word) {
    if (word == "m") {
        return MIN;
    }
    if (word == "h") {
        return HOUR;
    }
    return word == "d" ? std::optional<TimeUnit>(DAY) : std::nullopt;
}

std::optional<TimeUnit> readPeriodUnit(const std::string& word) {
    if (word == "msec") {
        return MSEC;
    }
    if (word == "sec") {
        return SEC;
    }
    if (word == "min") {
        return MIN;
    }
    if (word == "hour") {
        return HOUR;
    }
    return word == "day" ? std::optional<TimeUnit>(DAY) : std::nullopt;
}

Time readPeriod(const std::string& text) {
    const std::vector<std::string> pieces = Util::split(text, ' ');
    if (pieces.empty()) {
        throw Util::UtilException("Can't convert " + text + " to integer");
    }
    const std::optional<TimeUnit> unit = pieces.size() > 1 ? readPeriodUnit(pieces[1]) : std::nullopt;
    const std::int64_t count = Util::toInteger(pieces[0]);
    return Time(static_cast<std::uint64_t>(count), unit.value_or(DEFAULT_PERIOD_UNIT));
}

std::optional<std::uint64_t> readCountLimit(const std::string& text) {
    const LeadingNumber<std::uint64_t> number = readLeadingUnsigned(text);
    const bool isNegative = text.find('-') != std::string::npos;
    return number.isWhole ? std::optional<std::uint64_t>(isNegative ? 0 : number.value) : std::nullopt;
}

std::optional<std::uint64_t> readSizeLimit(const std::string& text) {
    return readLimit(text, [](const std::string& word) { return readSizeUnit(word); });
}

std::optional<Time> readTimeLimit(const std::string& text) {
    const auto microseconds = readLimit(text, [](const std::string& word) {
        const std::optional<TimeUnit> unit = readPeriodUnit(word);
        return unit ? std::optional<std::uint64_t>(Time(1, *unit).microseconds()) : std::nullopt;
    });
    return microseconds ? std::optional<Time>(Time(*microseconds, USEC)) : std::nullopt;
}

std::optional<std::uint64_t> readSize(const std::string& text, const std::string& unitName) {
    const LeadingNumber<std::uint64_t> count = readLeadingUnsigned(text);
    const std::uint64_t unit = readSizeUnit(unitName).value_or(DEFAULT_SIZE_UNIT);
    constexpr std::uint64_t LARGEST = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t size = count.value > LARGEST / unit ? LARGEST : count.value * unit;
    return count.isNumber ? std::optional<std::uint64_t>(size) : std::nullopt;
}

std::optional<Time> readLifetime(const std::string& text, const std::string& unitName) {
    const LeadingNumber<std::int32_t> count = readLeadingSigned(text);
    const Time lifetime(count.value > 0 ? static_cast<std::uint64_t>(count.value) : 0,
                        readLifetimeUnit(unitName).value_or(DEFAULT_LIFETIME_UNIT));
    return count.isNumber ? std::optional<Time>(lifetime) : std::nullopt;
}

std::optional<unsigned> readFileMode(const std::string& text) {
    constexpr unsigned ALL_PERMISSIONS = 0777;
    constexpr std::size_t MAX_DIGITS = 4;
    unsigned mode = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, mode, 8);
    const bool isMode =
        result.ec == std::errc() && result.ptr == end && text.size() <= MAX_DIGITS && mode <= ALL_PERMISSIONS;
    return isMode ? std::optional<unsigned>(mode) : std::nullopt;
}

std::optional<bool> readBoolean(const std::string& text) {
    if (text == "true") {
        return true;
    }
    return text == "false" ? std::optional<bool>(false) : std::nullopt;
}

std::ostream* readStream(const std::string& text) {
    if (text == "cerr") {
        return &std::cerr;
    }
    return text == "clog" ? &std::clog : &std::cout;
}

LayoutName readLayout(const std::string& text) {
    static constexpr std::pair<std::string_view, LayoutName> LAYOUTS[] = {
        {"plain", LayoutName::PLAIN},
        {"process", LayoutName::PROCESS},
        {"json", LayoutName::JSON},
        {"fields", LayoutName::FIELDS},
    };
    return valueNamed(text, LAYOUTS, text);
}

std::vector<std::string_view> columnNames() {
    std::vector<std::string_view> names;
    for (const auto& named : COLUMNS) {
        names.push_back(named.first);
    }
    return names;
}

std::vector<Column> readColumns(const std::string& text) {
    std::vector<Column> columns;
    for (const std::string& name : Util::split(text, ' ')) {
        columns.push_back(valueNamed(name, COLUMNS, text));
    }
    if (columns.empty()) {
        throw Util::UtilException(text);
    }
    return columns;
}

std::optional<RollMoment> readRollMoment(const std::string& text) {
    if (text == "hour") {
        return RollMoment::HOUR;
    }
    return text == "midnight" ? std::optional<RollMoment>(RollMoment::MIDNIGHT) : std::nullopt;
}

std::optional<bool> readCompression(const std::string& text) {
    if (text == "gzip") {
        return true;
    }
    return text == "none" ? std::optional<bool>(false) : std::nullopt;
}

} // namespace Log
} // namespace ZAV
