#include "filters/TimeBound.h"

#include "Outcome.h"
#include "platform/Clock.h"
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
constexpr std::size_t DAY_LENGTH = 10;    ///< of "2013.05.07"
constexpr std::size_t MINUTE_LENGTH = 16; ///< of "2013.05.07 14:03"
constexpr std::size_t SECOND_LENGTH = 19; ///< of "2013.05.07 14:03:27"

/// \return the earliest time that begins with a text
std::string earliestOf(const std::string& text) {
    const std::string earliest = "0000.01.01 00:00:00:000000";
    return text.size() < earliest.size() ? text + earliest.substr(text.size()) : text;
}

bool begins(const std::string& text) {
    const std::string time = earliestOf(text);
    return startsWithTime(time) && time.size() == TIME_STAMP_LENGTH &&
           std::stoi(time.substr(8, 2)) <=
               daysOfMonth(std::stoi(time.substr(0, 4)), std::stoi(time.substr(5, 2)));
}

/// \return true if the text is a time given to the year, month, day, hour, minute, second or microsecond
bool isBeginningOfTime(const std::string& text) {
    static constexpr std::array<std::size_t, 7> LENGTHS = {
        4, 7, DAY_LENGTH, 13, MINUTE_LENGTH, SECOND_LENGTH, TIME_STAMP_LENGTH};
    return std::find(LENGTHS.begin(), LENGTHS.end(), text.size()) != LENGTHS.end() && begins(text);
}

bool hasFraction(const std::string& text) {
    return text.size() > SECOND_LENGTH + 1 && begins(text);
}

/// \param text "2013-05-07T14:03:27.123" or a beginning of it
/// \return the same with the separators of a line; empty if it lacks those of ISO 8601
std::string fromIso(std::string text) {
    static const std::pair<std::size_t, std::pair<char, char>> MARKS[] = {
        {4, {'-', '.'}}, {7, {'-', '.'}}, {DAY_LENGTH, {'T', ' '}}, {SECOND_LENGTH, {'.', ':'}}};
    for (const auto& [place, mark] : MARKS) {
        const bool isBlankBeforeTime = place == DAY_LENGTH && text.size() > place && text[place] == ' ';
        if (text.size() > place && text[place] != mark.first && !isBlankBeforeTime) {
            return "";
        }
        if (text.size() > place) {
            text[place] = mark.second;
        }
    }
    return text;
}

/// Removes the offset from UTC from the end of a time.
/// \return false if there is none
bool takeOffset(std::string& text, std::int64_t& seconds) {
    const std::size_t length = text.size();
    if (length > MINUTE_LENGTH && text.back() == 'Z') {
        text.pop_back();
        seconds = 0;
        return true;
    }
    static constexpr std::size_t OFFSET_LENGTH = 6; // of "+02:00"
    if (length < MINUTE_LENGTH + OFFSET_LENGTH) {
        return false;
    }
    const std::string offset = text.substr(length - OFFSET_LENGTH);
    const std::string ofDay = "2000.01.01 " + offset.substr(1);
    if ((offset[0] != '+' && offset[0] != '-') || !isBeginningOfTime(ofDay)) {
        return false;
    }
    text.resize(length - OFFSET_LENGTH);
    const std::int64_t ahead = civilSeconds(ofDay + ":00") - civilSeconds("2000.01.01 00:00:00");
    seconds = offset[0] == '-' ? -ahead : ahead;
    return true;
}

/// \return the length in microseconds of a span whose time is given to the minute, the second or a digit of its
///         fraction
std::int64_t spanOf(const std::string& text) {
    std::int64_t span = text.size() == MINUTE_LENGTH ? 60 * MICROSECONDS_PER_SECOND : MICROSECONDS_PER_SECOND;
    for (std::size_t length = SECOND_LENGTH + 1; length < text.size(); ++length) {
        span /= 10;
    }
    return span;
}

} // namespace

TimeBound::TimeBound(const std::string& text, std::int64_t now) {
    if (!readCivil(text) && !readZoned(text) && !readTimeOfToday(text, now) && !readAge(text, now)) {
        throw UsageError("'" + text +
                         "' is no time: write 2013.05.07 14:03:27, a beginning of it, the same in ISO 8601, "
                         "14:03 of today, or an age like 30sec, 10min, 2h or 1d");
    }
}

bool TimeBound::readCivil(const std::string& text) {
    const std::string converted = fromIso(text);
    if (isBeginningOfTime(text)) {
        prefix_ = text;
    } else if (isBeginningOfTime(converted) || hasFraction(converted)) {
        prefix_ = converted;
    }
    return !prefix_.empty();
}

bool TimeBound::readZoned(const std::string& text) {
    std::string time = text;
    std::int64_t offset = 0;
    if (!takeOffset(time, offset)) {
        return false;
    }
    time = fromIso(time);
    const bool isWhole = (time.size() == MINUTE_LENGTH || time.size() == SECOND_LENGTH) && begins(time);
    if (!isWhole && !hasFraction(time)) {
        return false;
    }
    isPoint_ = true;
    const std::string earliest = earliestOf(time);
    begin_ = (civilSeconds(earliest) - offset) * MICROSECONDS_PER_SECOND + civilFraction(earliest);
    end_ = begin_ + spanOf(time);
    return true;
}

bool TimeBound::readTimeOfToday(const std::string& text, std::int64_t now) {
    const std::int64_t offset = Platform::utcOffset(now / MICROSECONDS_PER_SECOND);
    const std::string today = civilText(now + offset * MICROSECONDS_PER_SECOND).substr(0, DAY_LENGTH);
    const std::string time = today + ' ' + text;
    const bool isTime =
        (time.size() == MINUTE_LENGTH || time.size() == SECOND_LENGTH) && isBeginningOfTime(time);
    prefix_ = isTime ? time : "";
    return isTime;
}

bool TimeBound::readAge(const std::string& text, std::int64_t now) {
    static constexpr std::pair<std::string_view, std::int64_t> UNITS[] = {
        {"sec", 1},     {"s", 1},    {"min", 60},    {"m", 60},
        {"hour", 3600}, {"h", 3600}, {"day", 86400}, {"d", 86400}};
    std::uint32_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    std::string_view unit(end, static_cast<std::size_t>(text.data() + text.size() - end));
    unit.remove_prefix(!unit.empty() && unit.front() == ' ' ? 1 : 0);
    const auto* const found = std::find_if(std::begin(UNITS), std::end(UNITS),
                                           [unit](const auto& known) { return known.first == unit; });
    if (error != std::errc() || found == std::end(UNITS)) {
        return false;
    }
    static constexpr std::int64_t LONGEST = 10000 * INT64_C(366) * 86400; // no record is older
    isPoint_ = true;
    begin_ = now - std::min(count * found->second, LONGEST) * MICROSECONDS_PER_SECOND;
    end_ = begin_ + 1;
    return true;
}

} // namespace Tools
} // namespace ZAV
