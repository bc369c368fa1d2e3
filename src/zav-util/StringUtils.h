#pragma once

#include <string>
#include <vector>

namespace ZAV {
namespace Util {

/// Cuts a text into the maximal runs of characters other than the separator: runs of separators count as one,
/// and none of them makes an empty piece.
std::vector<std::string> split(const std::string& text, char separator);

} // namespace Util
} // namespace ZAV
