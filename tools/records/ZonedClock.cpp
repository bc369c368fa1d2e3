#include "records/ZonedClock.h"

#include "platform/Clock.h"

#include <cstdio>
#include <cstdlib>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::int64_t SECONDS_PER_DAY = 86400;
constexpr std::int64_t SECONDS_PER_SPAN = 900;

int secondOf(std::string_view time) {
    return (time[17] - '0') * 10 + time[18] - '0';
}

bool isOffsetOf(std::int64_t localSeconds, std::int64_t offset) {
    return Platform::utcOffset(localSeconds - offset) == offset;
}

} // namespace

void ZonedClock::goToMinute(std::string_view time) {
    minute_ = civilSeconds(time) - secondOf(time);
    if (minute_ / SECONDS_PER_SPAN != span_) {
        lookUp(minute_);
        span_ = minute_ / SECONDS_PER_SPAN;
    }
}

void ZonedClock::observe(std::string_view time, std::int64_t microseconds) {
    goToMinute(time);
    isSecond_ = comesTwice() && Platform::utcOffset(microseconds / 1000000) == second_;
    std::memcpy(time_.data(), time.data(), TIME_STAMP_LENGTH);
}

/// Only the offsets of the day before and of the day after can apply. For a local time that a change skips
/// neither does, and the one before is used.
void ZonedClock::lookUp(std::int64_t localSeconds) {
    const std::int64_t before = Platform::utcOffset(localSeconds - SECONDS_PER_DAY);
    const std::int64_t after = Platform::utcOffset(localSeconds + SECONDS_PER_DAY);
    if (before == after) {
        first_ = second_ = before;
        return;
    }
    const bool beforeApplies = isOffsetOf(localSeconds, before);
    const bool afterApplies = isOffsetOf(localSeconds, after);
    first_ = beforeApplies || !afterApplies ? before : after;
    second_ = afterApplies ? after : first_;
}

std::string ZonedClock::isoText() const {
    const int minutes = static_cast<int>(std::abs(offset()) / 60);
    std::string text(this->text());
    text[4] = text[7] = '-';
    text[10] = 'T';
    text[19] = '.';
    char zone[16];
    std::snprintf(zone, sizeof zone, "%c%02d:%02d", offset() < 0 ? '-' : '+', minutes / 60 % 100,
                  minutes % 60);
    return text + zone;
}

std::int64_t ZonedClock::microseconds() const {
    return (minute_ + secondOf(text()) - offset()) * 1000000 + civilFraction(text());
}

} // namespace Tools
} // namespace ZAV
