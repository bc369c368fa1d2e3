#include "platform/Fork.h"

namespace ZAV {
namespace Platform {

void atFork(void (*)(), void (*)(), void (*)()) {
    // No process forks here.
}

} // namespace Platform
} // namespace ZAV
