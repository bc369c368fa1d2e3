// Loads the plugin given as the second argument, logs through it and frees it, twice. The first argument is
// "finish" if the plugin is to take the library down each time, the third the directory of the logs.

#include <cstdlib>
#include <cstring>
#include <windows.h>

namespace {

using LogThroughPlugin = bool (*)(const char* directory, int first, bool finish);

/// \return what the plugin's function returned
bool logAndFree(const char* path, const char* directory, int first, bool finish) {
    const HMODULE plugin = LoadLibraryA(path);
    if (plugin == nullptr) {
        std::exit(2);
    }
    void* const function = reinterpret_cast<void*>(GetProcAddress(plugin, "logThroughPlugin"));
    const bool initialised = reinterpret_cast<LogThroughPlugin>(function)(directory, first, finish);
    if (!FreeLibrary(plugin)) {
        std::exit(3);
    }
    return initialised;
}

} // namespace

int main(int, char** arguments) {
    const bool finish = std::strcmp(arguments[1], "finish") == 0;
    const bool first = logAndFree(arguments[2], arguments[3], 1, finish);
    const bool second = logAndFree(arguments[2], arguments[3], 6, finish);
    return first && second == finish ? EXIT_SUCCESS : EXIT_FAILURE;
}
