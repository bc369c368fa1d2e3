#pragma once

namespace ZAV {
namespace Platform {

/// What the stack of a cancelled thread is unwound with. No thread is cancelled here: nothing throws it.
class ForcedUnwind {
    ForcedUnwind() = default;
};

} // namespace Platform
} // namespace ZAV
