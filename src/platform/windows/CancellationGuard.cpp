#include "platform/CancellationGuard.h"

namespace ZAV {
namespace Platform {

NoCancellation::NoCancellation() noexcept {
    static_cast<void>(before_);
}

NoCancellation::~NoCancellation() = default;

void actOnCancellation() {
    // Nobody can request it.
}

} // namespace Platform
} // namespace ZAV
