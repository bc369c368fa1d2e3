#pragma once

#include <dlfcn.h>

namespace ZAV::TestSupport {

inline void* loadModule(const char* path) {
    return dlopen(path, RTLD_NOW);
}

inline void* functionIn(void* module, const char* name) {
    return dlsym(module, name);
}

inline bool unloadModule(void* module) {
    return dlclose(module) == 0;
}

} // namespace ZAV::TestSupport
