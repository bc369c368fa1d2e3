#include "records/TimeStamp.h"

#include <algorithm>
#include <cstdio>

namespace ZAV {
namespace Tools {

namespace {

// The time stamps of the text layouts.

/// The lowest and the highest character at each position.
constexpr char LEAST[] = "0000.00.00 00:00:00:000000";
constexpr char GREATEST[] = "9999.19.39 29:59:69:999999";

static_assert(sizeof LEAST == TIME_STAMP_LENGTH + 1 && sizeof GREATEST == sizeof LEAST);

/// Checks all positions without a branch, which the compiler turns into a few vector instructions: this runs
/// for every line.
bool hasShapeOfTime(const char* text) {
    unsigned misfits = 0;
    for (std::size_t place = 0; place < TIME_STAMP_LENGTH; ++place) {
        const bool fits = text[place] >= LEAST[place] && text[place] <= GREATEST[place];
        misfits |= static_cast<unsigned>(!fits);
    }
    return misfits == 0;
}

int twoDigits(const char* text) {
    return (text[0] - '0') * 10 + (text[1] - '0');
}

bool isOnCalendar(const char* text) {
    const int month = twoDigits(text + 5);
    const int day = twoDigits(text + 8);
    return month >= 1 && month <= 12 && day >= 1 && day <= 31 && twoDigits(text + 11) <= 23 &&
           twoDigits(text + 17) <= 60;
}

bool isEndOfWord(char character) {
    return character == ' ' || character == '\n' || character == '\r';
}

// The calendar.

constexpr std::int64_t SECONDS_PER_DAY = 86400;
constexpr std::int64_t MICROSECONDS_PER_SECOND = 1000000;

int number(std::string_view text, std::size_t begin, std::size_t length) {
    int value = 0;
    for (const char digit : text.substr(begin, length)) {
        value = value * 10 + (digit - '0');
    }
    return value;
}

bool isLeapYear(std::int64_t year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

std::int64_t daysBeforeYear(std::int64_t year) {
    const std::int64_t passed = year - 1;
    return passed * 365 + passed / 4 - passed / 100 + passed / 400;
}

std::int64_t daysSinceEpoch(int year, int month, int day) {
    std::int64_t days = daysBeforeYear(year) - daysBeforeYear(1970);
    for (int passed = 1; passed < month; ++passed) {
        days += daysOfMonth(year, passed);
    }
    return days + day - 1;
}

// The points in time of `json` and of the column `utc`.

constexpr std::size_t SECONDS_LENGTH = 19; // of "2026-05-07T12:03:27"
constexpr std::size_t OFFSET_LENGTH = 6;   // of "+02:00"
constexpr std::size_t DIGITS_OF_FRACTION = 6;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
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
    if (!hasShape || twoDigits(text.data() + 1) > 23 || twoDigits(text.data() + 4) > 59) {
        return std::nullopt;
    }
    const std::int64_t ahead = twoDigits(text.data() + 1) * 3600 + twoDigits(text.data() + 4) * 60;
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
    const bool isTime = startsWithTime(stamp) &&
                        twoDigits(seconds.data() + 8) <=
                            daysOfMonth(twoDigits(seconds.data()) * 100 + twoDigits(seconds.data() + 2),
                                        twoDigits(seconds.data() + 5));
    return isTime ? stamp : "";
}

} // namespace

bool startsWithTime(std::string_view line) {
    return line.size() >= TIME_STAMP_LENGTH &&
           (line.size() == TIME_STAMP_LENGTH || isEndOfWord(line[TIME_STAMP_LENGTH])) &&
           hasShapeOfTime(line.data()) && isOnCalendar(line.data());
}

int daysOfMonth(int year, int month) {
    static constexpr int DAYS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return DAYS[month - 1] + (month == 2 && isLeapYear(year) ? 1 : 0);
}

std::int64_t civilSeconds(std::string_view time) {
    const std::int64_t days = daysSinceEpoch(number(time, 0, 4), number(time, 5, 2), number(time, 8, 2));
    return days * SECONDS_PER_DAY + number(time, 11, 2) * 3600 + number(time, 14, 2) * 60 +
           number(time, 17, 2);
}

std::int64_t civilFraction(std::string_view time) {
    return number(time, 20, 6);
}

std::string civilText(std::int64_t microseconds) {
    const std::int64_t seconds = microseconds / MICROSECONDS_PER_SECOND;
    std::int64_t days = seconds / SECONDS_PER_DAY;
    int year = 1970;
    for (; days >= 365 + (isLeapYear(year) ? 1 : 0); ++year) {
        days -= 365 + (isLeapYear(year) ? 1 : 0);
    }
    int month = 1;
    for (; days >= daysOfMonth(year, month); ++month) {
        days -= daysOfMonth(year, month);
    }
    const int ofDay = static_cast<int>(seconds % SECONDS_PER_DAY);
    char text[80];
    std::snprintf(text, sizeof text, "%04d.%02d.%02d %02d:%02d:%02d:%06d", year, month,
                  static_cast<int>(days) + 1, ofDay / 3600, ofDay / 60 % 60, ofDay % 60,
                  static_cast<int>(microseconds % MICROSECONDS_PER_SECOND));
    return text;
}

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
    const std::int64_t microseconds =
        (civilSeconds(stamp) - *offset) * MICROSECONDS_PER_SECOND + civilFraction(stamp);
    return microseconds < 0 || microseconds > LATEST_TIME ? std::nullopt
                                                          : std::optional<std::int64_t>(microseconds);
}

} // namespace Tools
} // namespace ZAV
