#include "zav-util/TimeText.h"

#include "platform/LocalTime.h"

#include <cstddef>

namespace ZAV {
namespace Util {
namespace TimeUtils {

namespace {

constexpr std::uint64_t MICROSECONDS_PER_SECOND = 1000000;

/// Every log line carries a time, so its digits are written without the cost of a formatting function.
/// \param number at most as long as the field; higher digits are cut off
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

char* writeSeconds(char* field, Time time) {
    const std::uint64_t seconds = time.microseconds() / MICROSECONDS_PER_SECOND;
    const Platform::CalendarTime local = Platform::toLocalTime(static_cast<std::int64_t>(seconds));
    field = writeDigits(field, 4, static_cast<unsigned>(local.year));
    field = writeField(field, '.', 2, local.month);
    field = writeField(field, '.', 2, local.day);
    field = writeField(field, ' ', 2, local.hour);
    field = writeField(field, ':', 2, local.minute);
    return writeField(field, ':', 2, local.second);
}

} // namespace

void appendSeconds(std::string& text, Time time) {
    char field[19];
    writeSeconds(field, time);
    text.append(field, sizeof field);
}

void appendTime(std::string& text, Time time) {
    char field[26];
    char* const end = writeSeconds(field, time);
    writeField(end, ':', 6, static_cast<int>(time.microseconds() % MICROSECONDS_PER_SECOND));
    text.append(field, sizeof field);
}

} // namespace TimeUtils
} // namespace Util
} // namespace ZAV
