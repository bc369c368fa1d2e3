// Loads the plugin given as the second argument, logs through it and unloads it, twice. The first argument is
// "finish" if the plugin is to take the library down each time, the third the directory of the logs.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

namespace {

using LogThroughPlugin = bool (*)(const char* directory, int first, bool finish);

/// \return what the plugin's function returned
bool logAndUnload(const char* path, const char* directory, int first, bool finish) {
    void* const plugin = dlopen(path, RTLD_NOW);
    if (plugin == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(2);
    }
    const auto log = reinterpret_cast<LogThroughPlugin>(dlsym(plugin, "logThroughPlugin"));
    const bool initialised = log(directory, first, finish);
    if (dlclose(plugin) != 0) {
        std::exit(3);
    }
    return initialised;
}

} // namespace

int main(int, char** arguments) {
    const bool finish = std::strcmp(arguments[1], "finish") == 0;
    const bool first = logAndUnload(arguments[2], arguments[3], 1, finish);
    const bool second = logAndUnload(arguments[2], arguments[3], 6, finish);
    return first && second == finish ? EXIT_SUCCESS : EXIT_FAILURE;
}
