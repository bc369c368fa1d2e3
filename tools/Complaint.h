#pragma once

#include <iostream>
#include <string>

namespace ZAV {
namespace Tools {

/// Says on standard error what is wrong, behind the program's name.
inline void complain(const std::string& text) {
    std::cerr << "zav-log: " << text << '\n';
}

} // namespace Tools
} // namespace ZAV
