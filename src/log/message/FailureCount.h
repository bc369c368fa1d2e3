#pragma once

#include <cstdint>

namespace ZAV {
namespace Log {

/// How many messages an appender has failed to write since the library was loaded, and how often it could not
/// roll, pack or delete a file, whether or not the failure could be reported.
namespace FailureCount {

void add() noexcept;

std::uint64_t get() noexcept;

} // namespace FailureCount
} // namespace Log
} // namespace ZAV
