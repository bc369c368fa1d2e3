#include "zav-util/StandardError.h"

#include "platform/Terminal.h"

#include <iostream>
#include <string>

namespace ZAV {
namespace Util {

void writeErrorLine(std::string_view begin, std::string_view rest) noexcept {
    try {
        std::string text(begin);
        text.append(rest).append(1, '\n');
        Platform::writeToStream(std::cerr, text);
    } catch (...) {
        return;
    }
}

} // namespace Util
} // namespace ZAV
