#include "log/layout/LineEscaping.h"

#include "log/message/MessageFields.h"

#include <algorithm>
#include <string_view>

namespace ZAV {
namespace Log {

namespace {

bool needsEscape(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7f || character == '\\';
}

bool needsEscape(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char character) { return needsEscape(character); });
}

void appendCode(std::string& text, char character) {
    constexpr char DIGITS[] = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(character);
    text += "\\x";
    text += DIGITS[code / 16];
    text += DIGITS[code % 16];
}

void appendEscape(std::string& text, char character) {
    switch (character) {
    case '\n':
        text += "\\n";
        break;
    case '\r':
        text += "\\r";
        break;
    case '\t':
        text += "\\t";
        break;
    case '\\':
        text += "\\\\";
        break;
    default:
        appendCode(text, character);
    }
}

std::string escape(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size() + 16);
    for (const char character : text) {
        if (needsEscape(character)) {
            appendEscape(escaped, character);
        } else {
            escaped += character;
        }
    }
    return escaped;
}

} // namespace

/// Hardly any message needs it, so the others are not copied.
void appendEscaped(std::string& line, const MessageFields& message, AppendLine appendLine) {
    if (!needsEscape(message.text) && !needsEscape(message.loggerName) && !needsEscape(message.file)) {
        appendLine(line, message);
        return;
    }
    const std::string loggerName = escape(message.loggerName);
    const std::string text = escape(message.text);
    const std::string file = escape(message.file);
    appendLine(line, {loggerName, message.time, message.level, text, message.line, file, message.type});
}

} // namespace Log
} // namespace ZAV
