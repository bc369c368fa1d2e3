#pragma once

#include <cstddef>

namespace ZAV {
namespace TestSupport {

/// \return how often the calling thread has allocated memory with `new` so far
std::size_t allocationsOfThisThread();

} // namespace TestSupport
} // namespace ZAV
