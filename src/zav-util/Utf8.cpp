#include "zav-util/Utf8.h"

namespace ZAV {
namespace Util {

namespace {

constexpr char DIGITS[] = "0123456789abcdef";

unsigned byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

/// \return the size in bytes of a character with that first byte; 0 if no character begins with it
std::size_t sequenceLength(unsigned first) {
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xc2 || first > 0xf4) {
        return 0;
    }
    return first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

/// The second byte also excludes overlong forms, surrogates and code points above U+10FFFF.
bool isSecond(unsigned first, unsigned second) {
    switch (first) {
    case 0xe0:
        return second >= 0xa0 && second <= 0xbf;
    case 0xed:
        return second >= 0x80 && second <= 0x9f;
    case 0xf0:
        return second >= 0x90 && second <= 0xbf;
    case 0xf4:
        return second >= 0x80 && second <= 0x8f;
    default:
        return second >= 0x80 && second <= 0xbf;
    }
}

/// \return how many bytes at the beginning of the text belong to one valid character of that size
std::size_t validBytes(std::string_view text, std::size_t size) {
    std::size_t count = 1;
    while (count < size && count < text.size()) {
        const unsigned byte = byteAt(text, count);
        const bool fits = count == 1 ? isSecond(byteAt(text, 0), byte) : byte >= 0x80 && byte <= 0xbf;
        if (!fits) {
            break;
        }
        ++count;
    }
    return count;
}

} // namespace

CodePoint firstCodePoint(std::string_view text) {
    const unsigned first = byteAt(text, 0);
    const std::size_t size = sequenceLength(first);
    if (size == 0 || validBytes(text, size) != size) {
        return {};
    }
    const unsigned bitsOfFirst[] = {0, 0x7f, 0x1f, 0x0f, 0x07};
    CodePoint character{static_cast<char32_t>(first & bitsOfFirst[size]), size};
    for (std::size_t index = 1; index < size; ++index) {
        character.value = (character.value << 6U) | (byteAt(text, index) & 0x3fU);
    }
    return character;
}

bool isTruncatedCharacter(std::string_view text) {
    const std::size_t size = text.empty() ? 0 : sequenceLength(byteAt(text, 0));
    return text.size() < size && validBytes(text, size) == text.size();
}

bool affectsTerminalDisplay(char32_t character) {
    return (character >= 0x80 && character <= 0x9f) || (character >= 0x202a && character <= 0x202e) ||
           (character >= 0x2066 && character <= 0x2069);
}

void appendByteEscape(std::string& text, char byte) {
    const auto code = static_cast<unsigned char>(byte);
    text += "\\x";
    text += DIGITS[code / 16];
    text += DIGITS[code % 16];
}

void appendCharacterEscape(std::string& text, char32_t character) {
    text += "\\u{";
    for (int shift = 12; shift >= 0; shift -= 4) {
        text += DIGITS[(character >> static_cast<unsigned>(shift)) & 0xfU];
    }
    text += '}';
}

} // namespace Util
} // namespace ZAV
