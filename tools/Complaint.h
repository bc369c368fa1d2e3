#pragma once

#include <iostream>
#include <string>

namespace ZAV {
namespace Tools {

/// Reports a problem on standard error, prefixed with the program's name.
inline void reportError(const std::string& text) {
    std::cerr << "zav-log: " << text << '\n';
}

} // namespace Tools
} // namespace ZAV
