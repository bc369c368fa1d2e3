#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// \return a text as a C string can hold it: NUL, which would end it, as `\x00`
std::string withVisibleNul(std::string text);

} // namespace Log
} // namespace ZAV
