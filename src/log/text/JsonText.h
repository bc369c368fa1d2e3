#pragma once

#include <string>
#include <string_view>

namespace ZAV {
namespace Log {

/// Appends a text as a JSON string, in quotes. Control characters are escaped, and so are U+2028 and U+2029,
/// which some programs take as line ends, so that the text is on one line everywhere. Each byte that is not
/// valid UTF-8 becomes U+FFFD.
/// \throw std::bad_alloc
void appendJsonText(std::string& line, std::string_view text);

} // namespace Log
} // namespace ZAV
