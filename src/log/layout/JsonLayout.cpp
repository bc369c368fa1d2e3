#include "log/layout/JsonLayout.h"

#include "log/message/MessageFields.h"
#include "log/text/PackedPairs.h"
#include "zav-util/TimeText.h"
#include "zav-util/Utf8.h"

#include <charconv>
#include <cmath>
#include <cstddef>

namespace ZAV {
namespace Log {

namespace {

constexpr char DIGITS[] = "0123456789abcdef";
constexpr std::string_view REPLACEMENT = "\xef\xbf\xbd"; // U+FFFD

/// Whether a byte stands in a JSON text as it is, whatever comes before and behind.
bool isPlain(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code >= 0x20 && code < 0x7f && character != '"' && character != '\\';
}

void appendCode(std::string& line, char32_t character) {
    line += "\\u";
    for (unsigned shift = 16; shift > 0;) {
        shift -= 4;
        line += DIGITS[(character >> shift) & 0xfU];
    }
}

void appendAscii(std::string& line, char character) {
    switch (character) {
    case '"':
        line += "\\\"";
        break;
    case '\\':
        line += "\\\\";
        break;
    case '\n':
        line += "\\n";
        break;
    case '\r':
        line += "\\r";
        break;
    case '\t':
        line += "\\t";
        break;
    default:
        appendCode(line, static_cast<unsigned char>(character));
    }
}

/// \return whether a character behind ASCII ends a line for some, or is a control character
bool isEscaped(char32_t character) {
    return character < 0xa0 || character == 0x2028 || character == 0x2029;
}

/// Appends the first character of a text, which is not plain.
/// \return its size; one byte where no character is whole
std::size_t appendFirst(std::string& line, std::string_view text) {
    if (static_cast<unsigned char>(text[0]) < 0x80) {
        appendAscii(line, text[0]);
        return 1;
    }
    const Util::CodePoint character = Util::firstCodePoint(text);
    if (character.size == 0) {
        line += REPLACEMENT;
        return 1;
    }
    if (isEscaped(character.value)) {
        appendCode(line, character.value);
    } else {
        line.append(text.substr(0, character.size));
    }
    return character.size;
}

void appendText(std::string& line, std::string_view text) {
    line += '"';
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain < text.size() && isPlain(text[plain])) {
            ++plain;
        }
        line.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (!text.empty()) {
            text.remove_prefix(appendFirst(line, text));
        }
    }
    line += '"';
}

template <typename Number>
void appendNumber(std::string& line, Number number) {
    char digits[24];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    line.append(digits, static_cast<std::size_t>(end - digits));
}

/// \return whether JSON has a value of its own for it, which then is its text
bool isWritten(const TaggedValue& value) {
    switch (value.kind) {
    case TaggedValue::Kind::SIGNED:
    case TaggedValue::Kind::UNSIGNED:
    case TaggedValue::Kind::BOOLEAN:
    case TaggedValue::Kind::NUMBER:
        return true;
    case TaggedValue::Kind::DOUBLE:
        return std::isfinite(value.doubleNumber);
    case TaggedValue::Kind::FLOAT:
        return std::isfinite(value.floatNumber);
    default:
        return false;
    }
}

void appendPairs(std::string& line, std::string_view name, std::string_view packed) {
    if (packed.empty()) {
        return;
    }
    line.append(name);
    char separator = '{';
    forEachLastPair(packed, [&](const Pair& pair) {
        line += separator;
        separator = ',';
        line += '"';
        line.append(pair.key); // whose characters need no escape
        line += "\":";
        const ValueText value(pair.value);
        if (isWritten(pair.value)) {
            line.append(value.view());
        } else {
            appendText(line, value.view());
        }
    });
    line += '}';
}

void appendKind(std::string& line, const MessageFields& message) {
    if (message.type == CFG) {
        line += ",\"type\":\"CFG\"";
        return;
    }
    line += ",\"type\":\"LOG\",\"level\":";
    appendText(line, Level::toString(message.level));
}

void appendPlace(std::string& line, const MessageFields& message) {
    if (!message.file.empty()) {
        line += ",\"file\":";
        appendText(line, message.file);
    }
    if (message.line > 0) {
        line += ",\"line\":";
        appendNumber(line, message.line);
    }
}

} // namespace

void JsonLayout::append(std::string& line, const MessageFields& message) const {
    constexpr std::size_t USUAL_SIZE = 256;
    line.reserve(line.size() + USUAL_SIZE + message.text.size() + 2 * message.pairsText.size());
    char time[Util::TimeUtils::UTC_LENGTH];
    line += "{\"time\":\"";
    line.append(time, static_cast<std::size_t>(Util::TimeUtils::writeUtc(time, message.time) - time));
    line += "\",\"logger\":";
    appendText(line, message.loggerName);
    appendKind(line, message);
    appendPlace(line, message);
    line += ",\"thread\":";
    appendNumber(line, message.thread);
    line += ",\"text\":";
    appendText(line, message.text);
    appendPairs(line, ",\"values\":", message.values);
    appendPairs(line, ",\"context\":", message.context);
    line += '}';
}

} // namespace Log
} // namespace ZAV
