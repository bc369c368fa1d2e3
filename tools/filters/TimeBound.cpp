#include "filters/TimeBound.h"

#include "UsageError.h"
#include "platform/ZoneOffset.h"
#include "records/CivilTime.h"
#include "records/TimeStamp.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::int64_t MICROSECONDS_PER_SECOND = 1000000;

/// \return true if the text is a year, or goes on to a month, a day, an hour, a minute or a second
bool isBeginningOfTime(const std::string& text) {
    static constexpr std::array<std::size_t, 6> LENGTHS = {4, 7, 10, 13, 16, 19};
    const std::string earliest = "0000.01.01 00:00:00:000000";
    if (std::find(LENGTHS.begin(), LENGTHS.end(), text.size()) == LENGTHS.end()) {
        return false;
    }
    const std::string filledUp = text + earliest.substr(text.size());
    if (!startsWithTime(filledUp)) {
        return false;
    }
    const int day = std::stoi(filledUp.substr(8, 2));
    return day <= daysOfMonth(std::stoi(filledUp.substr(0, 4)), std::stoi(filledUp.substr(5, 2)));
}

/// \return false if the text is no age
bool readAge(const std::string& text, std::int64_t& seconds) {
    static constexpr std::pair<std::string_view, std::int64_t> UNITS[] = {
        {"sec", 1}, {"min", 60}, {"h", 3600}, {"d", 86400}};
    std::uint32_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    const std::string_view unit(end, static_cast<std::size_t>(text.data() + text.size() - end));
    if (error != std::errc()) {
        return false;
    }
    for (const auto& [name, length] : UNITS) {
        if (unit == name) {
            seconds = count * length;
            return true;
        }
    }
    return false;
}

} // namespace

TimeBound::TimeBound(const std::string& text, std::int64_t now) : begin_(text) {
    if (isBeginningOfTime(text)) {
        return;
    }
    std::int64_t age = 0;
    if (!readAge(text, age)) {
        throw UsageError("'" + text +
                         "' is no time: write 2013.05.07 14:03:27, a beginning of it, or an age like "
                         "30sec, 10min, 2h or 1d");
    }
    const bool isBefore1970 = age > now / MICROSECONDS_PER_SECOND;
    const std::int64_t then = isBefore1970 ? 0 : now - age * MICROSECONDS_PER_SECOND;
    const std::int64_t offset = Platform::utcOffset(then / MICROSECONDS_PER_SECOND);
    begin_ = civilText(std::max<std::int64_t>(then + offset * MICROSECONDS_PER_SECOND, 0));
}

} // namespace Tools
} // namespace ZAV
