#include <windows.h>

/// Asks the system not to tell the library of threads that start and end, and does nothing else: whatever it
/// did would run under the loader's lock.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(library);
    }
    return TRUE;
}
