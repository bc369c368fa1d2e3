#include "terminal/TerminalText.h"

#include "zav-util/Utf8.h"

#include <cstddef>

namespace ZAV {
namespace Tools {

namespace {

bool isPlain(char character) {
    const auto code = static_cast<unsigned char>(character);
    return (code >= 0x20 && code < 0x7f) || character == '\n' || character == '\t';
}

bool isLineEnd(std::string_view text) {
    return text.size() > 1 && text[0] == '\r' && text[1] == '\n';
}

bool isIncomplete(std::string_view text) {
    return text == "\r" || Util::isTruncatedCharacter(text);
}

/// Appends the first character of a text as a terminal is to show it.
/// \return its size in the text
std::size_t appendFirst(std::string& shown, std::string_view text) {
    const Util::CodePoint character = Util::firstCodePoint(text);
    if (isPlain(text[0])) {
        shown += text[0];
    } else if (character.size < 2) {
        Util::appendByteEscape(shown, text[0]);
        return 1;
    } else if (Util::affectsTerminalDisplay(character.value)) {
        Util::appendCharacterEscape(shown, character.value);
    } else {
        shown += text.substr(0, character.size);
    }
    return character.size;
}

} // namespace

void TerminalText::append(std::string& shown, std::string_view text) {
    std::string joined;
    if (!incomplete_.empty()) {
        joined = incomplete_.append(text);
        incomplete_.clear();
        text = joined;
    }
    while (!text.empty() && !isIncomplete(text)) {
        if (isLineEnd(text)) {
            text.remove_prefix(1);
        }
        text.remove_prefix(appendFirst(shown, text));
    }
    incomplete_ = text;
}

void TerminalText::finish(std::string& shown) {
    for (const char byte : incomplete_) {
        Util::appendByteEscape(shown, byte);
    }
    incomplete_.clear();
}

} // namespace Tools
} // namespace ZAV
