#pragma once

#include <string>

namespace ZAV {
namespace Util {

/// Writes a line and its line end to the standard error stream in one piece and flushes the stream. It never
/// throws: failing to report a problem must not add another.
void writeErrorLine(const std::string& line) noexcept;

} // namespace Util
} // namespace ZAV
