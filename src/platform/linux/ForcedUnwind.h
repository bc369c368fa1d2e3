#pragma once

#include <cxxabi.h>

namespace ZAV {
namespace Platform {

/// What the stack of a cancelled thread is unwound with. Whoever catches everything must let it pass.
using ForcedUnwind = abi::__forced_unwind;

} // namespace Platform
} // namespace ZAV
