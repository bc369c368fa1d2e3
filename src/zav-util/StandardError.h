#pragma once

#include <string>

namespace ZAV {
namespace Util {

/// Writes a line and its end to the standard error stream in one piece and flushes it. It never throws: a
/// report that cannot be written must not disturb what it reports on.
void writeErrorLine(const std::string& line) noexcept;

} // namespace Util
} // namespace ZAV
