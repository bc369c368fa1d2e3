#include <windows.h>

/// Turns off notifications of threads that start and end. Does nothing else, since it runs under the loader
/// lock.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(library);
    }
    return TRUE;
}
