#include "log/layout/LineLayout.h"

#include "log/message/MessageFields.h"
#include "zav-util/Utf8.h"

#include <algorithm>
#include <string_view>

namespace ZAV {
namespace Log {

namespace {

/// The first UTF-8 bytes of the non-ASCII characters that are escaped.
constexpr char FIRST_OF_CONTROLS = '\xc2';
constexpr char FIRST_OF_OVERRIDES = '\xe2';

/// \return whether a byte is escaped, or begins a character that may be
bool mayNeedEscape(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7f || character == '\\' || character == FIRST_OF_CONTROLS ||
           character == FIRST_OF_OVERRIDES;
}

bool mayNeedEscape(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char character) { return mayNeedEscape(character); });
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
        Util::appendByteEscape(text, character);
    }
}

/// Appends the first character of a text if it is escaped, else its first byte.
/// \return its size in the text
std::size_t appendFirst(std::string& escaped, std::string_view text) {
    const bool isAscii = static_cast<unsigned char>(text[0]) < 0x80;
    if (isAscii && mayNeedEscape(text[0])) {
        appendEscape(escaped, text[0]);
        return 1;
    }
    const Util::CodePoint character = isAscii ? Util::CodePoint() : Util::firstCodePoint(text);
    if (character.size > 1 && Util::affectsTerminalDisplay(character.value)) {
        Util::appendCharacterEscape(escaped, character.value);
        return character.size;
    }
    escaped += text[0];
    return 1;
}

std::string escape(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size() + 16);
    while (!text.empty()) {
        text.remove_prefix(appendFirst(escaped, text));
    }
    return escaped;
}

} // namespace

/// Few messages need it; the others are not copied.
void EscapedLayout::append(std::string& line, const MessageFields& message) const {
    if (!mayNeedEscape(message.text) && !mayNeedEscape(message.loggerName) && !mayNeedEscape(message.file)) {
        layout_->append(line, message);
        return;
    }
    const std::string loggerName = escape(message.loggerName);
    const std::string text = escape(message.text);
    const std::string file = escape(message.file);
    MessageFields escaped(message);
    escaped.loggerName = loggerName;
    escaped.text = text;
    escaped.file = file;
    layout_->append(line, escaped);
}

} // namespace Log
} // namespace ZAV
