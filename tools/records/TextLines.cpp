#include "records/TextLines.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace ZAV {
namespace Tools {

namespace {

/// Program, process id, host, logger, location and level.
constexpr std::size_t MAX_WORDS = 6;
constexpr std::size_t PROCESS_WORDS = 3;
constexpr std::size_t LONGEST_NUMBER = 10;

/// The words of a line after its time, split at single blanks, since a text may begin with blanks of its own.
class Words {
public:
    explicit Words(std::string_view lines)
        : lines_(lines), lineEnd_(std::min(lines.find('\n'), lines.size())) {
        std::size_t begin = TIME_STAMP_LENGTH + 1;
        while (count_ < MAX_WORDS && begin <= lineEnd_) {
            const std::size_t end = std::min(lines_.find(' ', begin), lineEnd_);
            begins_[count_] = begin;
            ends_[count_] = end;
            ++count_;
            begin = end + 1;
        }
    }

    std::string_view operator[](std::size_t index) const {
        return index < count_ ? lines_.substr(begins_[index], ends_[index] - begins_[index])
                              : std::string_view();
    }
    std::size_t count() const { return count_; }

    /// \return everything after the first `count` words and the blank that follows them
    std::string_view behind(std::size_t count) const {
        count = std::min(count, count_);
        const std::size_t end = count == 0 ? TIME_STAMP_LENGTH : ends_[count - 1];
        const bool blankFollows = end < lineEnd_;
        return lines_.substr(std::min(end + (blankFollows ? 1 : 0), lines_.size()));
    }

private:
    std::string_view lines_;
    std::size_t lineEnd_;
    std::array<std::size_t, MAX_WORDS> begins_;
    std::array<std::size_t, MAX_WORDS> ends_;
    std::size_t count_ = 0;
};

bool isLevel(std::string_view word) {
    Log::Level::LogLevel level;
    return findLevelNamed(word, level);
}

bool isNumber(std::string_view word) {
    return !word.empty() && word.size() <= LONGEST_NUMBER &&
           std::all_of(word.begin(), word.end(), [](char digit) { return digit >= '0' && digit <= '9'; });
}

/// A location is never empty: a level after two blanks belongs to a text.
bool hasLevelBehind(const Words& words, std::size_t logger) {
    return isLevel(words[logger + 1]) || (!words[logger + 1].empty() && isLevel(words[logger + 2]));
}

bool hasProcess(const Words& words) {
    return words.count() > PROCESS_WORDS && isNumber(words[1]);
}

void parseMessage(const Words& words, std::size_t logger, Fields& fields) {
    fields.logger = words[logger];
    fields.hasLevel = findLevelNamed(words[logger + 1], fields.level);
    if (fields.hasLevel) {
        fields.text = words.behind(logger + 2);
        return;
    }
    const std::string_view location = words[logger + 1];
    fields.hasLevel = !location.empty() && findLevelNamed(words[logger + 2], fields.level);
    if (fields.hasLevel) {
        parseLocation(location, fields);
        fields.text = words.behind(logger + 3);
        return;
    }
    fields.text = words.behind(logger + 1);
}

} // namespace

bool findLevelNamed(std::string_view word, Log::Level::LogLevel& level) {
    struct Named {
        std::string_view name;
        Log::Level::LogLevel level;
    };
    static constexpr Named NAMED[] = {
        {"INFO", Log::Level::LEVEL_INFO},   {"DEBUG", Log::Level::LEVEL_DEBUG},
        {"TRACE", Log::Level::LEVEL_TRACE}, {"WARNING", Log::Level::LEVEL_WARNING},
        {"ERROR", Log::Level::LEVEL_ERROR}, {"AUDIT", Log::Level::LEVEL_AUDIT}};
    for (const Named& named : NAMED) {
        if (word == named.name) {
            level = named.level;
            return true;
        }
    }
    return false;
}

void parseLocation(std::string_view location, Fields& fields) {
    const std::size_t colon = location.rfind(':');
    const std::string_view number = colon == std::string_view::npos ? "" : location.substr(colon + 1);
    if (isNumber(number) && number.front() != '0') {
        fields.file = location.substr(0, colon);
        fields.line = number;
    } else {
        fields.file = location;
    }
}

Layout layoutOf(std::string_view line) {
    const Words words(line);
    // In this order, since a location that is a number is rarer still than a host with the name of a level.
    if (hasProcess(words) && hasLevelBehind(words, PROCESS_WORDS)) {
        return Layout::PROCESS;
    }
    return hasLevelBehind(words, 0) ? Layout::PLAIN : Layout::UNKNOWN;
}

Fields parseRecord(std::string_view lines, Layout layout) {
    const Words words(lines);
    Fields fields;
    if (layout != Layout::PROCESS) {
        parseMessage(words, 0, fields);
    } else if (hasProcess(words)) {
        fields.program = words[0];
        fields.pid = words[1];
        fields.host = words[2];
        parseMessage(words, PROCESS_WORDS, fields);
    } else if (hasLevelBehind(words, 0)) {
        parseMessage(words, 0, fields); // another program writes to the file too
    } else {
        fields.text = words.behind(0); // a torn line: its logger is unknown
    }
    return fields;
}

} // namespace Tools
} // namespace ZAV
