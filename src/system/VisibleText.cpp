#include "system/VisibleText.h"

namespace ZAV {
namespace Log {

std::string withVisibleNul(std::string text) {
    const std::string shown = "\\x00";
    for (auto at = text.find('\0'); at != std::string::npos; at = text.find('\0', at + shown.size())) {
        text.replace(at, 1, shown);
    }
    return text;
}

} // namespace Log
} // namespace ZAV
