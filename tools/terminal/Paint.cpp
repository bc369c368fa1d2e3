#include "terminal/Paint.h"

#include <array>
#include <random>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::array<std::string_view, 6> SEQUENCES = {"\x1b[0m",  "\x1b[1;35m", "\x1b[1;31m",
                                                       "\x1b[33m", "\x1b[1;32m", "\x1b[2m"};

bool hasMark = false;

std::string makeRandomMark() {
    constexpr int RANDOM_BYTES = 16;
    std::random_device device;
    std::string mark = "\xff"; // in no valid UTF-8, so that it is found quickly
    for (int count = 0; count < RANDOM_BYTES; ++count) {
        mark += static_cast<char>(device() & 0xffU);
    }
    hasMark = true;
    return mark;
}

/// \return the mark, which is followed by a byte for the paint
const std::string& mark() {
    static const std::string mark = makeRandomMark();
    return mark;
}

void appendMark(std::string& text, Paint paint) {
    text += mark();
    text += static_cast<char>(paint);
}

} // namespace

Paint paintOf(Log::Level::LogLevel level) {
    switch (level) {
    case Log::Level::LEVEL_AUDIT:
        return Paint::MAGENTA;
    case Log::Level::LEVEL_ERROR:
        return Paint::RED;
    case Log::Level::LEVEL_WARNING:
        return Paint::YELLOW;
    case Log::Level::LEVEL_INFO:
        break;
    case Log::Level::LEVEL_DEBUG:
    case Log::Level::LEVEL_TRACE:
        return Paint::DIM;
    }
    return Paint::PLAIN;
}

std::string painted(Paint paint, std::string_view text) {
    std::string result;
    appendMark(result, paint);
    result += text;
    appendMark(result, Paint::PLAIN);
    return result;
}

PaintedPiece takePiece(std::string_view& text) {
    const std::size_t begin = hasMark ? text.find(mark()) : std::string_view::npos;
    const std::size_t sizeOfMark = hasMark ? mark().size() + 1 : 0;
    if (begin == std::string_view::npos || text.size() - begin < sizeOfMark) {
        const PaintedPiece last{text, {}};
        text = {};
        return last;
    }
    const auto paint = static_cast<std::size_t>(text[begin + sizeOfMark - 1]);
    const PaintedPiece piece{text.substr(0, begin), SEQUENCES.at(paint)};
    text.remove_prefix(begin + sizeOfMark);
    return piece;
}

bool isAnythingPainted() {
    return hasMark;
}

} // namespace Tools
} // namespace ZAV
