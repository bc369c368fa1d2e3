#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// \return the text with each NUL as `\x00`, so that a C string can hold it
std::string withVisibleNul(std::string text);

} // namespace Log
} // namespace ZAV
