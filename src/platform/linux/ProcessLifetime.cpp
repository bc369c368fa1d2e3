#include "platform/ProcessLifetime.h"

#include <cstdlib>

namespace ZAV {
namespace Platform {

void atProcessEnd(void (*handler)()) {
    std::atexit(handler);
}

void keepLibraryLoaded() {
    // The library is linked with "-z nodelete", which holds for all of its users, threads or not.
}

} // namespace Platform
} // namespace ZAV
