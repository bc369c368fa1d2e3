#include "platform/Fork.h"

namespace ZAV {
namespace Platform {

void atFork(void (*)(), void (*)()) {
    // No process forks here.
}

unsigned forkGeneration() noexcept {
    return 0;
}

} // namespace Platform
} // namespace ZAV
