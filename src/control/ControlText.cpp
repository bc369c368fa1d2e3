#include "control/ControlText.h"

namespace ZAV {
namespace Log {

namespace {

std::string escaped(unsigned char character) {
    const char* const digits = "0123456789abcdef";
    switch (character) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return std::string("\\x") + digits[character / 16] + digits[character % 16];
    }
}

} // namespace

std::string toPrintable(const std::string& text) {
    std::string printable;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isControl = byte < 0x20 || byte == 0x7f;
        printable += isControl ? escaped(byte) : std::string(1, character);
    }
    return printable;
}

} // namespace Log
} // namespace ZAV
