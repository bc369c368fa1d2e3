#pragma once

#include <string_view>

namespace ZAV {
namespace Util {

/// Writes a line, given in one or two parts, with its line end to the standard error stream in one piece, and
/// flushes the stream. It never throws: failing to report a problem must not add another.
void writeErrorLine(std::string_view begin, std::string_view rest = std::string_view()) noexcept;

} // namespace Util
} // namespace ZAV
