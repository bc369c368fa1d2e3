#include "platform/ProcessLifetime.h"

#include <cstdlib>

namespace ZAV {
namespace Platform {

void atProcessEnd(void (*handler)()) {
    std::atexit(handler);
}

void keepLibraryLoaded() {
    // The library is linked with "-z nodelete", so nothing unloads it anyway.
}

} // namespace Platform
} // namespace ZAV
