#include "zav-util/StandardError.h"

#include "platform/NoCancellation.h"

#include <iostream>

namespace ZAV {
namespace Util {

void writeErrorLine(const std::string& line) noexcept {
    const Platform::NoCancellation guard;
    try {
        const std::string text = line + '\n';
        std::cerr.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    } catch (...) {
        return;
    }
}

} // namespace Util
} // namespace ZAV
