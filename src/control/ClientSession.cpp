#include "control/ClientSession.h"

namespace ZAV {
namespace Log {

void LineBuffer::append(const std::string& bytes) {
    bytes_ += bytes;
}

std::optional<LineBuffer::Line> LineBuffer::next() {
    for (;;) {
        const std::string::size_type end = bytes_.find('\n');
        if (end == std::string::npos) {
            break;
        }
        std::optional<Line> line = nextEnded(end);
        if (line) {
            return line;
        }
    }
    const std::size_t longestWithReturn = MAX_LENGTH + 1;
    const bool isTooLong = !isSkipping_ && bytes_.size() > longestWithReturn;
    if (isSkipping_ || isTooLong) {
        bytes_.clear();
    }
    if (!isTooLong) {
        return std::nullopt;
    }
    isSkipping_ = true;
    return Line{std::string(), true};
}

/// Removes the line that ends at the given line feed.
/// \return nothing if it was the rest of a line already reported
std::optional<LineBuffer::Line> LineBuffer::nextEnded(std::size_t end) {
    Line line{bytes_.substr(0, end), false};
    bytes_.erase(0, end + 1);
    if (isSkipping_) {
        isSkipping_ = false;
        return std::nullopt;
    }
    if (!line.text.empty() && line.text.back() == '\r') {
        line.text.pop_back();
    }
    if (line.text.size() > MAX_LENGTH) {
        return Line{std::string(), true};
    }
    return line;
}

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
