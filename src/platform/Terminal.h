#pragma once

namespace ZAV {
namespace Platform {

/// \return true if standard output is a terminal that understands ANSI colours; where those must be switched on,
/// they are then
bool showsColors();

} // namespace Platform
} // namespace ZAV
