#pragma once

namespace ZAV {
namespace Platform {

enum StandardStream { STANDARD_OUTPUT, STANDARD_ERROR };

/// \return true if somebody reads the stream at a terminal
bool isTerminal(StandardStream stream);

/// \return true if standard output is a terminal that understands ANSI colours; where those must be switched on,
/// they are then
bool showsColors();

} // namespace Platform
} // namespace ZAV
