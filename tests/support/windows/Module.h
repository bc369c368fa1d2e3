#pragma once

#include <windows.h>

namespace ZAV::TestSupport {

inline void* loadModule(const char* path) {
    return LoadLibraryA(path);
}

inline void* functionIn(void* module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

inline bool unloadModule(void* module) {
    return FreeLibrary(static_cast<HMODULE>(module)) != 0;
}

} // namespace ZAV::TestSupport
