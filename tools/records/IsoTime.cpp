#include "records/IsoTime.h"

#include "records/CivilTime.h"
#include "records/TimeStamp.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::size_t SECONDS_LENGTH = 19; // of "2026-05-07T12:03:27"
constexpr std::size_t OFFSET_LENGTH = 6;   // of "+02:00"
constexpr std::size_t DIGITS_OF_FRACTION = 6;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

int twoDigits(std::string_view text) {
    return (text[0] - '0') * 10 + (text[1] - '0');
}

/// \param text what follows the seconds; the fraction is removed
/// \return its first digits, padded with zeros; empty if it is a point without digits
std::string takeFraction(std::string_view& text) {
    std::string digits;
    if (!text.empty() && text.front() == '.') {
        text.remove_prefix(1);
        const auto* const end = std::find_if_not(text.begin(), text.end(), isDigit);
        digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
        text.remove_prefix(digits.size());
        if (digits.empty()) {
            return digits;
        }
    }
    digits.resize(DIGITS_OF_FRACTION, '0');
    return digits;
}

/// \return seconds ahead of UTC
std::optional<std::int64_t> readOffset(std::string_view text) {
    if (text == "Z") {
        return 0;
    }
    const bool hasShape = text.size() == OFFSET_LENGTH && (text[0] == '+' || text[0] == '-') &&
                          isDigit(text[1]) && isDigit(text[2]) && text[3] == ':' && isDigit(text[4]) &&
                          isDigit(text[5]);
    if (!hasShape || twoDigits(text.substr(1)) > 23 || twoDigits(text.substr(4)) > 59) {
        return std::nullopt;
    }
    const std::int64_t ahead = twoDigits(text.substr(1)) * 3600 + twoDigits(text.substr(4)) * 60;
    return text[0] == '-' ? -ahead : ahead;
}

/// \return the time as a time stamp of the text layouts; empty if it is invalid
std::string stampOf(std::string_view seconds, const std::string& fraction) {
    if (seconds[4] != '-' || seconds[7] != '-' || seconds[10] != 'T') {
        return "";
    }
    std::string stamp(seconds);
    stamp[4] = stamp[7] = '.';
    stamp[10] = ' ';
    stamp += ':' + fraction;
    const bool isTime =
        startsWithTime(stamp) &&
        twoDigits(seconds.substr(8)) <= daysOfMonth(twoDigits(seconds) * 100 + twoDigits(seconds.substr(2)),
                                                    twoDigits(seconds.substr(5)));
    return isTime ? stamp : "";
}

} // namespace

std::optional<std::int64_t> readIsoTime(std::string_view text) {
    if (text.size() <= SECONDS_LENGTH) {
        return std::nullopt;
    }
    std::string_view rest = text.substr(SECONDS_LENGTH);
    const std::string fraction = takeFraction(rest);
    const std::optional<std::int64_t> offset = readOffset(rest);
    const std::string stamp = fraction.empty() ? "" : stampOf(text.substr(0, SECONDS_LENGTH), fraction);
    if (stamp.empty() || !offset) {
        return std::nullopt;
    }
    const std::int64_t microseconds = (civilSeconds(stamp) - *offset) * 1000000 + civilFraction(stamp);
    return microseconds < 0 || microseconds > LATEST_TIME ? std::nullopt
                                                          : std::optional<std::int64_t>(microseconds);
}

} // namespace Tools
} // namespace ZAV
