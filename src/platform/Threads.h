#pragma once

namespace ZAV {
namespace Platform {

/// Has the calling thread sleep for a few dozen microseconds.
/// \return false, at once, where the system cannot wake a thread so soon (Windows)
bool sleepBriefly() noexcept;

} // namespace Platform
} // namespace ZAV
