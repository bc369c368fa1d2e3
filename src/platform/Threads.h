#pragma once

#include <cstdint>

namespace ZAV {
namespace Platform {

/// Has the calling thread sleep for a few dozen microseconds.
/// \return false, at once, where the system cannot wake a thread so soon (Windows)
bool sleepBriefly() noexcept;

/// \return the system's id of the calling thread. It is asked for anew each time, which takes a system call on Linux.
std::uint64_t currentThreadId() noexcept;

} // namespace Platform
} // namespace ZAV
