#include "control/ControlRequest.h"

#include "control/ControlText.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace ZAV {
namespace Log {

namespace {

enum Arguments { NO_ARGUMENTS, NAME_AND_VALUE, NAME_AND_REST };

struct Form {
    const char* word;
    ControlRequest::Kind kind;
    Arguments arguments;
    const char* usage;
};

constexpr std::array<Form, 6> FORMS = {{
    {"loggers", ControlRequest::LOGGERS, NO_ARGUMENTS, "loggers"},
    {"level", ControlRequest::LEVEL, NAME_AND_VALUE, "level LOGGER LEVEL"},
    {"expiration", ControlRequest::EXPIRATION, NAME_AND_VALUE, "expiration LOGGER MINUTES"},
    {"command", ControlRequest::COMMAND, NAME_AND_REST, "command NAME [ARGUMENT]"},
    {"statistics", ControlRequest::STATISTICS, NO_ARGUMENTS, "statistics"},
    {"flush", ControlRequest::FLUSH, NO_ARGUMENTS, "flush"},
}};

const char* const BLANKS = " \t";

/// A text in two: what stands before a blank, and what stands behind it.
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
        throw std::invalid_argument("There is no request '" + toPrintable(word) +
                                    "', but loggers, level, expiration, command, statistics and flush");
    }
    return *form;
}

Halves argumentsOf(const Form& form, const std::string& rest) {
    if (form.arguments == NAME_AND_REST) {
        const std::string arguments = withoutBlanksBefore(rest);
        return splitAt(arguments, arguments.find_first_of(BLANKS));
    }
    const std::string arguments = withoutBlanksBefore(withoutBlanksBehind(rest));
    if (form.arguments == NO_ARGUMENTS) {
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
    case NAME_AND_VALUE:
        return !arguments.second.empty();
    case NAME_AND_REST:
        break;
    }
    return !arguments.first.empty();
}

} // namespace

ControlRequest ControlRequest::parse(const std::string& line) {
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
    return request;
}

} // namespace Log
} // namespace ZAV
