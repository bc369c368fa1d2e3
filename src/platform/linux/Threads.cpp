#include "platform/Threads.h"

#include <ctime>

namespace ZAV {
namespace Platform {

bool sleepBriefly() noexcept {
    const timespec duration = {0, 50'000}; // to which the system adds as much
    nanosleep(&duration, nullptr);
    return true;
}

} // namespace Platform
} // namespace ZAV
