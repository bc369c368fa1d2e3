#include "log/layout/LineEscaping.h"

#include "log/LogMessage.h"

#include <algorithm>

namespace ZAV {
namespace Log {

namespace {

bool needsEscape(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7f || character == '\\';
}

bool needsEscape(const std::string& text) {
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

std::string escape(const std::string& text) {
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
void appendEscaped(std::string& line, const LogMessage& message,
                   void (*appendLine)(std::string&, const LogMessage&)) {
    if (needsEscape(message.getText()) || needsEscape(message.getLoggerName()) ||
        needsEscape(message.getFile())) {
        appendLine(line, LogMessage(escape(message.getLoggerName()), message.getTime(), message.getLevel(),
                                    escape(message.getText()), message.getLine(), escape(message.getFile()),
                                    message.getType()));
    } else {
        appendLine(line, message);
    }
}

} // namespace Log
} // namespace ZAV
