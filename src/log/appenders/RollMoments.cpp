#include "log/appenders/RollMoments.h"

#include "platform/Clock.h"

#include <algorithm>
#include <cstdint>

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

namespace {

constexpr std::int64_t MICROSECONDS = 1'000'000;
constexpr std::int64_t HOUR = 3600;
constexpr std::int64_t DAY = 24 * HOUR;
constexpr int MOST_CHANGES = 4; ///< within a day; a time that the system cannot convert ends the search, too

/// What a clock on the wall shows, as seconds, at a moment of UTC.
std::int64_t shownAt(std::int64_t moment) {
    return Platform::toSeconds(Platform::toLocalTime(moment));
}

/// \return the first second in (begin, end] at which clocks have been put forward or back since `begin`; `end` if none
///         is earlier
std::int64_t findChange(std::int64_t begin, std::int64_t end) {
    const std::int64_t offset = shownAt(begin) - begin;
    if (shownAt(end) - end == offset) {
        return end;
    }
    while (end - begin > 1) {
        const std::int64_t middle = begin + (end - begin) / 2;
        (shownAt(middle) - middle == offset ? begin : end) = middle;
    }
    return end;
}

bool beginsPeriod(std::int64_t moment, std::int64_t length) {
    const std::int64_t before = shownAt(moment - 1);
    const std::int64_t shown = shownAt(moment);
    return shown / length != before / length || (length == HOUR && shown < before);
}

/// \return the first moment behind another one at which an hour or a day of local time begins
std::int64_t nextMoment(std::int64_t moment, std::int64_t length) {
    for (int change = 0; change < MOST_CHANGES; ++change) {
        moment = findChange(moment, moment + length - shownAt(moment) % length);
        if (beginsPeriod(moment, length)) {
            break;
        }
    }
    return moment;
}

Time toTime(std::int64_t seconds) {
    return Time(static_cast<std::uint64_t>(seconds), Util::TimeUtils::SEC);
}

} // namespace

RollPeriod::RollPeriod(RollMoment moment, Time time) : RollPeriod() {
    if (moment == RollMoment::NEVER) {
        earliest = Time();
    } else {
        const std::int64_t length = moment == RollMoment::HOUR ? HOUR : DAY;
        const std::int64_t next =
            nextMoment(static_cast<std::int64_t>(time.microseconds() / MICROSECONDS), length);
        earliest = toTime(std::max<std::int64_t>(next - 3 * length, 0));
        end = toTime(next);
    }
}

} // namespace Log
} // namespace ZAV
