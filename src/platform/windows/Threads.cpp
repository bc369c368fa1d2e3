#include "platform/Threads.h"

namespace ZAV {
namespace Platform {

bool sleepBriefly() noexcept {
    return false; // the shortest sleep lasts for a tick of the system's timer
}

} // namespace Platform
} // namespace ZAV
