#pragma once

#include <cstdint>

namespace ZAV {
namespace Platform {

/// Reads the system's clock.
/// \return whole milliseconds since 1970-01-01 00:00:00 UTC
std::uint64_t currentMilliseconds();

} // namespace Platform
} // namespace ZAV
