#include "platform/Fork.h"

#include <process.h>

namespace ZAV {
namespace Platform {

void atFork(void (*)(), void (*)()) {
    // No process forks here.
}

unsigned forkGeneration() noexcept {
    return 0;
}

int rememberedProcessId() noexcept {
    return _getpid();
}

} // namespace Platform
} // namespace ZAV
