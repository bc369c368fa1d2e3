#include "platform/Clock.h"

namespace ZAV {
namespace Platform {

namespace {

// Years begin in March here, so that a leap day is the last day of its year.

constexpr std::int64_t SECONDS_PER_DAY = 86400;
constexpr std::int64_t EPOCH = 719468; ///< 1970-01-01, in days since 0000-03-01

std::int64_t daysBeforeYear(std::int64_t year) {
    return 365 * year + year / 4 - year / 100 + year / 400;
}

/// \param month 0 for March
std::int64_t daysBeforeMonth(std::int64_t month) {
    return (153 * month + 2) / 5; // any five months in a row have 153 days
}

std::int64_t yearOf(std::int64_t days) {
    const std::int64_t guess = days * 400 / daysBeforeYear(400); // at most one off
    if (daysBeforeYear(guess) > days) {
        return guess - 1;
    }
    return daysBeforeYear(guess + 1) <= days ? guess + 1 : guess;
}

} // namespace

std::int64_t toSeconds(const CalendarTime& time) {
    const bool isMarchOrLater = time.month > 2;
    const std::int64_t year = isMarchOrLater ? time.year : time.year - 1;
    const std::int64_t month = isMarchOrLater ? time.month - 3 : time.month + 9;
    const std::int64_t days = daysBeforeYear(year) + daysBeforeMonth(month) + time.day - 1 - EPOCH;
    return ((days * 24 + time.hour) * 60 + time.minute) * 60 + time.second;
}

CalendarTime toCalendarTime(std::int64_t seconds) {
    const std::int64_t fromEpochOfYears = seconds + EPOCH * SECONDS_PER_DAY;
    const std::int64_t days = fromEpochOfYears / SECONDS_PER_DAY;
    const auto second = static_cast<int>(fromEpochOfYears % SECONDS_PER_DAY);
    const std::int64_t year = yearOf(days);
    const std::int64_t dayOfYear = days - daysBeforeYear(year);
    const std::int64_t month = (5 * dayOfYear + 2) / 153;
    const bool isMarchOrLater = month < 10;
    return {static_cast<int>(isMarchOrLater ? year : year + 1),
            static_cast<int>(isMarchOrLater ? month + 3 : month - 9),
            static_cast<int>(dayOfYear - daysBeforeMonth(month) + 1),
            second / 3600,
            second / 60 % 60,
            second % 60};
}

} // namespace Platform
} // namespace ZAV
