#include "platform/ProcessLifetime.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

void atProcessEnd(void (*)()) {
    // A library hears of the process's end when its threads are gone, wherever they stood: nothing is left to
    // wait for, and a lock that one of them held is never released.
}

void keepLibraryLoaded() {
    const auto placeInLibrary = reinterpret_cast<const char*>(&keepLibraryLoaded);
    HMODULE library;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, placeInLibrary,
                       &library);
}

} // namespace Platform
} // namespace ZAV
