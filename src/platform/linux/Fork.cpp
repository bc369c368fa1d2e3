#include "platform/Fork.h"

#include <pthread.h>

namespace ZAV {
namespace Platform {

// The functions of the locks were registered first, while the library was loaded: so they run last before the
// fork, and first after it.
void atFork(void (*before)(), void (*inParent)(), void (*inChild)()) {
    pthread_atfork(before, inParent, inChild);
}

} // namespace Platform
} // namespace ZAV
