#include "records/CivilTime.h"

#include <cstdio>

namespace ZAV {
namespace Tools {

namespace {

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

} // namespace

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

} // namespace Tools
} // namespace ZAV
