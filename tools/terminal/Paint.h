#pragma once

#include "log/Level.h"

#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// How a text stands out where there are colours.
enum class Paint : char { PLAIN, MAGENTA, RED, YELLOW, GREEN, DIM };

/// \return how a message of that level stands out
Paint paintOf(Log::Level::LogLevel level);

/// \return the text between marks that `Output` replaces by the sequences of a terminal. A mark is drawn by
///         chance in each process, so no text from outside can hold one.
std::string painted(Paint paint, std::string_view text);

/// What comes next in a text that may hold marks.
struct PaintedPiece {
    std::string_view text;     ///< up to the next mark
    std::string_view sequence; ///< of the terminal, behind the text; empty at the end
};

/// Takes the next piece off a text.
PaintedPiece takePiece(std::string_view& text);

/// \return whether there may be a mark anywhere; without one a text is shown as it is
bool isAnythingPainted();

} // namespace Tools
} // namespace ZAV
