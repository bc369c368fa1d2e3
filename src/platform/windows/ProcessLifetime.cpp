#include "platform/ProcessLifetime.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

void atProcessEnd(void (*)()) {
    // When a library hears of the end of the process, the other threads are gone already, wherever they were:
    // there is nothing left to wait for, and a lock that one of them was holding is never released.
}

bool isOnlyThread() noexcept {
    return false;
}

void markAsServing() noexcept {
    // Nobody asks for it.
}

void keepLibraryLoaded() {
    const auto placeInLibrary = reinterpret_cast<const char*>(&keepLibraryLoaded);
    HMODULE library;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, placeInLibrary,
                       &library);
}

} // namespace Platform
} // namespace ZAV
