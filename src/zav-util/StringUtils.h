#pragma once

#include <string>
#include <vector>

namespace ZAV {
namespace Util {

/// Splits a text at a separator. Several separators in a row count as one, and no piece is empty, not even
/// where the text begins or ends with a separator.
std::vector<std::string> split(const std::string& text, char separator);

} // namespace Util
} // namespace ZAV
