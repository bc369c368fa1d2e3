#include "log/text/JsonText.h"

#include "zav-util/Utf8.h"

#include <cstddef>

namespace ZAV {
namespace Log {

namespace {

constexpr char DIGITS[] = "0123456789abcdef";
constexpr std::string_view REPLACEMENT = "\xef\xbf\xbd"; // U+FFFD

/// Whether a byte is written to JSON unchanged, whatever surrounds it.
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

/// \return whether a character beyond ASCII is a control character or taken as a line end by some programs
bool isEscaped(char32_t character) {
    return character < 0xa0 || character == 0x2028 || character == 0x2029;
}

/// Appends the first character of a text, which is not plain.
/// \return its size; 1 if the text does not begin with a complete character
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

} // namespace

void appendJsonText(std::string& line, std::string_view text) {
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

} // namespace Log
} // namespace ZAV
