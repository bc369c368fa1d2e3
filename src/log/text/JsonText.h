#pragma once

#include <string>
#include <string_view>

namespace ZAV {
namespace Log {

/// Appends a text as JSON has it, in quotes. Every control character is escaped, and so is what ends a line
/// for some (U+2028, U+2029), so that the text is on one line whoever shows it. A byte that is no UTF-8
/// becomes U+FFFD.
/// \throw std::bad_alloc
void appendJsonText(std::string& line, std::string_view text);

} // namespace Log
} // namespace ZAV
