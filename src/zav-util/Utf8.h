#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZAV {
namespace Util {

/// The first code point of a UTF-8 text.
struct CodePoint {
    char32_t value = 0;
    std::size_t size = 0; ///< bytes; 0 if the text does not begin with a whole and valid character
};

/// \param text at least one byte
CodePoint firstCodePoint(std::string_view text);

/// \return whether a text is an incomplete character that more bytes may complete
bool isTruncatedCharacter(std::string_view text);

/// \return whether a non-ASCII character changes how a terminal shows the text around it: the control
///         characters from U+0080 to U+009F, and those that embed, override or isolate the text direction
bool affectsTerminalDisplay(char32_t character);

/// Appends a byte as `\xHH`.
void appendByteEscape(std::string& text, char byte);

/// Appends a character as `\u{HHHH}`.
/// \param character below U+10000
void appendCharacterEscape(std::string& text, char32_t character);

} // namespace Util
} // namespace ZAV
