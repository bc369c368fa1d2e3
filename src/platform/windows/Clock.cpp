#include "platform/Clock.h"

#include <sys/timeb.h>

namespace ZAV {
namespace Platform {

std::uint64_t currentMilliseconds() {
    __timeb64 now;
    _ftime64(&now);
    return static_cast<std::uint64_t>(now.time) * 1000 + now.millitm;
}

} // namespace Platform
} // namespace ZAV
