#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// \return the text with its control characters as `\n`, `\x1b` and the like: it then takes one line, and does
///         nothing to a terminal
std::string toPrintable(const std::string& text);

} // namespace Log
} // namespace ZAV
