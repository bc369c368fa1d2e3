#pragma once

#include "log/Level.h"

#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// How a text is highlighted where there are colours.
enum class Paint : char { PLAIN, MAGENTA, RED, YELLOW, GREEN, DIM };

/// \return how a message of that level is highlighted
Paint paintOf(Log::Level::LogLevel level);

/// \return the text between marks that `Output` replaces by escape sequences of the terminal. The mark is random in
///         each process, so that no text from outside can contain it.
std::string painted(Paint paint, std::string_view text);

/// The next piece of a text that may contain marks.
struct PaintedPiece {
    std::string_view text;     ///< up to the next mark
    std::string_view sequence; ///< the escape sequence after the text; empty at the end
};

/// Removes and returns the next piece of a text.
PaintedPiece takePiece(std::string_view& text);

/// \return whether there may be a mark in any text; without one a text is shown as it is
bool isAnythingPainted();

} // namespace Tools
} // namespace ZAV
