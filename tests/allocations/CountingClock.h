#pragma once

#include <cstddef>

namespace ZAV {
namespace TestSupport {

/// \return how often the calling thread has read the clock so far
std::size_t clockReadingsOfThisThread();

} // namespace TestSupport
} // namespace ZAV
