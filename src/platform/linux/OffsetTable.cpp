#include "OffsetTable.h"

#include "platform/CivilTime.h"

#include <algorithm>
#include <ctime>

namespace ZAV {
namespace Platform {

namespace {

constexpr std::int64_t DAY = 86400;
constexpr std::int64_t YEAR = 366 * DAY;
constexpr std::int64_t KNOWN_BEFORE = YEAR;
constexpr std::int64_t KNOWN_AFTER = 10 * YEAR;
/// No zone changes its offset and takes that back within such a time.
constexpr std::int64_t STEP = 7 * DAY;

/// What the zone adds to the seconds, leap seconds included where it counts them.
std::int64_t askOffset(std::int64_t seconds) {
    return toSeconds(askSystem(seconds)) - seconds;
}

/// \param last a time with that offset
/// \param changed a later time with another one
/// \return the first second with another one
std::int64_t findChange(std::int64_t last, std::int64_t changed, std::int64_t offset) {
    while (changed - last > 1) {
        const std::int64_t middle = last + (changed - last) / 2;
        (askOffset(middle) == offset ? last : changed) = middle;
    }
    return changed;
}

} // namespace

CalendarTime askSystem(std::int64_t seconds) {
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm local;
    if (localtime_r(&time, &local) == nullptr) {
        return CalendarTime{};
    }
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

void OffsetTable::fill(std::int64_t now) {
    const std::int64_t end = now + KNOWN_AFTER;
    std::int64_t time = now - KNOWN_BEFORE;
    std::int64_t offset = askOffset(time);
    count_ = 0;
    while (time < end && count_ + 1 < periods_.size()) {
        const std::int64_t next = std::min(time + STEP, end);
        if (askOffset(next) == offset) {
            time = next;
        } else {
            time = findChange(time, next, offset);
            periods_[count_++] = {time, offset};
            offset = askOffset(time);
        }
    }
    periods_[count_++] = {time, offset};
    filledAt_ = now;
}

bool OffsetTable::isFreshAt(std::int64_t seconds) const {
    return isFilled() && seconds > filledAt_ - DAY && seconds < filledAt_ + DAY;
}

std::int64_t OffsetTable::offsetAt(std::int64_t seconds) const {
    const Period* const last = &periods_[count_ - 1];
    return std::find_if(&periods_[0], last, [seconds](const Period& period) { return seconds < period.end; })
        ->offset;
}

} // namespace Platform
} // namespace ZAV
