#include "control/ControlRequest.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <stdexcept>

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

void LineBuffer::append(const std::string& bytes) {
    bytes_ += bytes;
}

std::optional<LineBuffer::Line> LineBuffer::next() {
    for (;;) {
        const std::string::size_type end = bytes_.find('\n');
        if (end == std::string::npos) {
            break;
        }
        std::optional<Line> line = nextEnded(end);
        if (line) {
            return line;
        }
    }
    const std::size_t longestWithReturn = MAX_LENGTH + 1;
    const bool isTooLong = !isSkipping_ && bytes_.size() > longestWithReturn;
    if (isSkipping_ || isTooLong) {
        bytes_.clear();
    }
    if (!isTooLong) {
        return std::nullopt;
    }
    isSkipping_ = true;
    return Line{std::string(), true};
}

/// Removes the line that ends at the given line feed.
/// \return nothing if it was the rest of a line already reported
std::optional<LineBuffer::Line> LineBuffer::nextEnded(std::size_t end) {
    Line line{bytes_.substr(0, end), false};
    bytes_.erase(0, end + 1);
    if (isSkipping_) {
        isSkipping_ = false;
        return std::nullopt;
    }
    if (!line.text.empty() && line.text.back() == '\r') {
        line.text.pop_back();
    }
    if (line.text.size() > MAX_LENGTH) {
        return Line{std::string(), true};
    }
    return line;
}

namespace {

std::string escaped(unsigned char character) {
    const char* const digits = "0123456789abcdef";
    switch (character) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return std::string("\\x") + digits[character / 16] + digits[character % 16];
    }
}

} // namespace

std::string toPrintable(const std::string& text) {
    std::string printable;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isControl = byte < 0x20 || byte == 0x7f;
        printable += isControl ? escaped(byte) : std::string(1, character);
    }
    return printable;
}

namespace {

enum Arguments { NO_ARGUMENTS, NAME_OR_NONE, NAME_AND_VALUE, NAME_AND_REST };

struct Form {
    const char* word;
    ControlRequest::Kind kind;
    Arguments arguments;
    const char* usage;
};

constexpr std::array<Form, 8> FORMS = {{
    {"loggers", ControlRequest::LOGGERS, NO_ARGUMENTS, "loggers"},
    {"appenders", ControlRequest::APPENDERS, NO_ARGUMENTS, "appenders"},
    {"level", ControlRequest::LEVEL, NAME_AND_VALUE, "level LOGGER LEVEL [for TIME]"},
    {"expiration", ControlRequest::EXPIRATION, NAME_AND_VALUE, "expiration LOGGER MINUTES"},
    {"command", ControlRequest::COMMAND, NAME_AND_REST, "command NAME [ARGUMENT]"},
    {"statistics", ControlRequest::STATISTICS, NO_ARGUMENTS, "statistics"},
    {"flush", ControlRequest::FLUSH, NO_ARGUMENTS, "flush"},
    {"reload", ControlRequest::RELOAD, NAME_OR_NONE, "reload [FILE]"},
}};

const char* const BLANKS = " \t";

struct Unit {
    const char* word;
    Util::TimeUtils::TimeUnit unit;
};

constexpr std::array<Unit, 8> UNITS = {{
    {"sec", Util::TimeUtils::SEC},
    {"s", Util::TimeUtils::SEC},
    {"min", Util::TimeUtils::MIN},
    {"m", Util::TimeUtils::MIN},
    {"hour", Util::TimeUtils::HOUR},
    {"h", Util::TimeUtils::HOUR},
    {"day", Util::TimeUtils::DAY},
    {"d", Util::TimeUtils::DAY},
}};

/// A text split at a blank.
struct Halves {
    std::string first;
    std::string second;
};

Halves splitAt(const std::string& text, std::string::size_type blank) {
    return blank == std::string::npos ? Halves{text, std::string()}
                                      : Halves{text.substr(0, blank), text.substr(blank + 1)};
}

std::string withoutBlanksBefore(const std::string& text) {
    const std::string::size_type begin = text.find_first_not_of(BLANKS);
    return begin == std::string::npos ? std::string() : text.substr(begin);
}

std::string withoutBlanksBehind(const std::string& text) {
    return text.substr(0, text.find_last_not_of(BLANKS) + 1);
}

const Form& formOf(const std::string& word) {
    const auto form = std::find_if(FORMS.begin(), FORMS.end(),
                                   [&word](const Form& candidate) { return candidate.word == word; });
    if (form == FORMS.end()) {
        throw std::invalid_argument(
            "There is no request '" + toPrintable(word) +
            "', but loggers, appenders, level, expiration, command, statistics, flush and reload");
    }
    return *form;
}

Halves argumentsOf(const Form& form, const std::string& rest) {
    if (form.arguments == NAME_AND_REST) {
        const std::string arguments = withoutBlanksBefore(rest);
        return splitAt(arguments, arguments.find_first_of(BLANKS));
    }
    const std::string arguments = withoutBlanksBefore(withoutBlanksBehind(rest));
    if (form.arguments == NO_ARGUMENTS || form.arguments == NAME_OR_NONE) {
        return Halves{arguments, std::string()};
    }
    const std::string::size_type lastBlank = arguments.find_last_of(BLANKS);
    const Halves halves = splitAt(arguments, lastBlank);
    return Halves{withoutBlanksBehind(halves.first), halves.second};
}

bool hasRightNumber(const Form& form, const Halves& arguments) {
    switch (form.arguments) {
    case NO_ARGUMENTS:
        return arguments.first.empty();
    case NAME_OR_NONE:
        return true;
    case NAME_AND_VALUE:
        return !arguments.second.empty();
    case NAME_AND_REST:
        break;
    }
    return !arguments.first.empty();
}

/// \throw std::invalid_argument if it is not a duration, or absurdly long
Time readDuration(const std::string& text) {
    const std::uint64_t mostDays = 36500;
    std::uint64_t count = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, count);
    const auto unit = std::find_if(UNITS.begin(), UNITS.end(), [&](const Unit& candidate) {
        return candidate.word == std::string(result.ptr, end);
    });
    if (result.ec != std::errc() || unit == UNITS.end() ||
        count > Time(mostDays, Util::TimeUtils::DAY).microseconds() / Time(1, unit->unit).microseconds()) {
        throw std::invalid_argument("'" + toPrintable(text) +
                                    "' is no time, which is 90sec, 10min or 2h, for example");
    }
    return Time(count, unit->unit);
}

/// The part before "for" in "LOGGER LEVEL for TIME"; TIME is the last word.
struct ForWhile {
    Halves nameAndLevel;
    bool isMeant; ///< whether it has this form: no level begins with a digit, so the last word is a time
};

ForWhile splitAtFor(const Halves& arguments) {
    const Halves beforeFor = splitAt(arguments.first, arguments.first.find_last_of(BLANKS));
    const std::string rest = withoutBlanksBehind(beforeFor.first);
    const std::string::size_type lastBlank = rest.find_last_of(BLANKS);
    const bool isTime = arguments.second.find_first_of("0123456789") == 0;
    const Halves nameAndLevel = splitAt(rest, lastBlank);
    return {{withoutBlanksBehind(nameAndLevel.first), nameAndLevel.second},
            isTime && beforeFor.second == "for" && lastBlank != std::string::npos};
}

} // namespace

ControlRequest ControlRequest::parse(const std::string& line) {
    if (line.find('\0') != std::string::npos) {
        throw std::invalid_argument("A request holds no NUL.");
    }
    const std::string text = withoutBlanksBefore(line);
    const Halves halves = splitAt(text, text.find_first_of(BLANKS));
    const Form& form = formOf(halves.first);
    const Halves arguments = argumentsOf(form, halves.second);
    if (!hasRightNumber(form, arguments)) {
        throw std::invalid_argument(std::string("The request is: ") + form.usage);
    }
    ControlRequest request(form.kind);
    request.name_ = arguments.first;
    request.value_ = arguments.second;
    const ForWhile forWhile = splitAtFor(arguments);
    if (form.kind == LEVEL && forWhile.isMeant) {
        request.kind_ = LEVEL_FOR;
        request.name_ = forWhile.nameAndLevel.first;
        request.value_ = forWhile.nameAndLevel.second;
        request.duration_ = readDuration(arguments.second);
    }
    return request;
}

} // namespace Log
} // namespace ZAV
