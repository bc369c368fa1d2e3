#include "zav-util/TimeUtils.h"

#include "platform/Clock.h"
#include "zav-util/TimeText.h"

#include <cstring>

namespace ZAV {
namespace Util {
namespace TimeUtils {

Time Time::now() {
    return Time(Platform::currentMilliseconds(), MSEC);
}

std::string Time::toSecondsString() const {
    char text[SECONDS_LENGTH];
    writeSeconds(text, *this);
    return std::string(text, sizeof text);
}

std::string Time::toString() const {
    char text[TIME_LENGTH];
    writeTime(text, *this);
    return std::string(text, sizeof text);
}

namespace {

constexpr std::uint64_t MICROSECONDS_PER_SECOND = 1000000;

/// Every log line carries a time, so its digits are written without the cost of a formatting function.
/// \param number leading digits that the field has no room for are dropped
char* writeDigits(char* field, std::size_t width, unsigned number) {
    for (std::size_t i = width; i > 0; --i) {
        field[i - 1] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
    return field + width;
}

char* writeField(char* field, char separator, std::size_t width, int number) {
    *field = separator;
    return writeDigits(field + 1, width, static_cast<unsigned>(number));
}

/// \param ofDate separates the parts of the date, and `beforeHour` follows it
void writeCalendarTime(char* field, const Platform::CalendarTime& time, char ofDate, char beforeHour) {
    field = writeDigits(field, 4, static_cast<unsigned>(time.year));
    field = writeField(field, ofDate, 2, time.month);
    field = writeField(field, ofDate, 2, time.day);
    field = writeField(field, beforeHour, 2, time.hour);
    field = writeField(field, ':', 2, time.minute);
    writeField(field, ':', 2, time.second);
}

/// The second that this thread rendered last. Many messages share a second, and converting it to local time
/// costs as much as the rest of a line. It is valid only while the process keeps its time zone.
struct RenderedSecond {
    std::uint64_t seconds;
    Platform::TimeZone zone;
    bool isValid;
    char text[SECONDS_LENGTH];
};

thread_local RenderedSecond lastSecond{};

const char* textOfSecond(std::uint64_t seconds) {
    RenderedSecond& last = lastSecond;
    const Platform::TimeZone zone = Platform::currentTimeZone();
    if (!last.isValid || last.seconds != seconds || !(last.zone == zone)) {
        writeCalendarTime(last.text, Platform::toLocalTime(static_cast<std::int64_t>(seconds)), '.', ' ');
        last.seconds = seconds;
        last.zone = zone;
        // Another thread may have changed the zone in the meantime; the text then shows one zone or the other
        // and is not kept.
        last.isValid = Platform::currentTimeZone() == zone;
    }
    return last.text;
}

constexpr std::size_t UTC_SECONDS_LENGTH = 19;

/// The same for UTC, which has no zone to change.
struct RenderedUtcSecond {
    std::uint64_t seconds;
    bool isValid;
    char text[UTC_SECONDS_LENGTH];
};

thread_local RenderedUtcSecond lastUtcSecond{};

} // namespace

char* writeUtc(char* field, Time time) {
    RenderedUtcSecond& last = lastUtcSecond;
    const std::uint64_t seconds = time.microseconds() / MICROSECONDS_PER_SECOND;
    if (!last.isValid || last.seconds != seconds) {
        writeCalendarTime(last.text, Platform::toCalendarTime(static_cast<std::int64_t>(seconds)), '-', 'T');
        last.seconds = seconds;
        last.isValid = true;
    }
    std::memcpy(field, last.text, UTC_SECONDS_LENGTH);
    const std::uint64_t milliseconds = time.microseconds() % MICROSECONDS_PER_SECOND / 1000;
    field = writeField(field + UTC_SECONDS_LENGTH, '.', 3, static_cast<int>(milliseconds));
    *field = 'Z';
    return field + 1;
}

char* writeSeconds(char* field, Time time) {
    std::memcpy(field, textOfSecond(time.microseconds() / MICROSECONDS_PER_SECOND), SECONDS_LENGTH);
    return field + SECONDS_LENGTH;
}

char* writeTime(char* field, Time time) {
    const std::uint64_t microseconds = time.microseconds() % MICROSECONDS_PER_SECOND;
    return writeField(writeSeconds(field, time), ':', 6, static_cast<int>(microseconds));
}

} // namespace TimeUtils
} // namespace Util
} // namespace ZAV
