// Loads the plugin given as the second argument, logs through it and unloads it, twice. The first argument is
// "finish" if the plugin is to take the library down each time, the third the directory of the logs.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

namespace {

using LogThroughPlugin = bool (*)(const char* directory, int first, bool finish);

void quit(const char* text) {
    std::fprintf(stderr, "%s\n", text);
    std::exit(EXIT_FAILURE);
}

/// \return what the plugin's function returned
bool logAndUnload(const char* path, const char* directory, int first, bool finish) {
    void* const plugin = dlopen(path, RTLD_NOW);
    if (plugin == nullptr) {
        quit(dlerror());
    }
    const auto log = reinterpret_cast<LogThroughPlugin>(dlsym(plugin, "logThroughPlugin"));
    const bool initialised = log(directory, first, finish);
    if (dlclose(plugin) != 0) {
        quit(dlerror());
    }
    return initialised;
}

} // namespace

int main(int, char** arguments) {
    const bool finish = std::strcmp(arguments[1], "finish") == 0;
    const char* const path = arguments[2];
    const char* const directory = arguments[3];
    if (!logAndUnload(path, directory, 1, finish)) {
        quit("The library was set up already.");
    }
    if (logAndUnload(path, directory, 6, finish) != finish) {
        quit("The library forgot whether it was set up.");
    }
    return EXIT_SUCCESS;
}
