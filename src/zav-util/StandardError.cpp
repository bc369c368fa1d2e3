#include "zav-util/StandardError.h"

#include "platform/CancellationGuard.h"

#include <iostream>
#include <string>

namespace ZAV {
namespace Util {

void writeErrorLine(std::string_view begin, std::string_view rest) noexcept {
    const Platform::NoCancellation noCancellation;
    try {
        std::string text(begin);
        text.append(rest).append(1, '\n');
        std::cerr.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    } catch (...) {
        return;
    }
}

} // namespace Util
} // namespace ZAV
