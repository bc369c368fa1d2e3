#include "log/config/ValueReaders.h"

#include "zav-util/Conversions.h"
#include "zav-util/StringUtils.h"
#include "zav-util/UtilException.h"

#include <charconv>
#include <cstddef>
#include <locale>
#include <sstream>
#include <system_error>
#include <vector>

namespace ZAV {
namespace Log {

using namespace Util::TimeUtils;

namespace {

/// A stream that fails at a text without a number leaves 0, and at one out of range a bound.
template <typename Number>
LeadingNumber<Number> readLeadingNumber(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    LeadingNumber<Number> number;
    stream >> number.value;
    number.isCut = stream.fail() && number.value != 0;
    number.isNumber = !stream.fail() || number.isCut;
    number.isWhole = number.isNumber && stream.eof();
    return number;
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

std::optional<unsigned> readFileMode(const std::string& text) {
    constexpr unsigned ALL_PERMISSIONS = 0777;
    constexpr std::size_t MOST_DIGITS = 4;
    unsigned mode = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, mode, 8);
    const bool isMode = result.ec == std::errc() && result.ptr == end && text.size() <= MOST_DIGITS &&
                        mode <= ALL_PERMISSIONS;
    return isMode ? std::optional<unsigned>(mode) : std::nullopt;
}

std::optional<bool> readBoolean(const std::string& text) {
    if (text == "true") {
        return true;
    }
    return text == "false" ? std::optional<bool>(false) : std::nullopt;
}

} // namespace Log
} // namespace ZAV
