#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// \return the text with each NUL as `\x00`, so that a C string can hold it
inline std::string withVisibleNul(std::string text) {
    const std::string shown = "\\x00";
    for (auto at = text.find('\0'); at != std::string::npos; at = text.find('\0', at + shown.size())) {
        text.replace(at, 1, shown);
    }
    return text;
}

} // namespace Log
} // namespace ZAV
