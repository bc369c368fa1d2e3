// Loads the plugin given as the second argument, logs through it and unloads it, twice. The first argument is
// "finish" if the plugin is to shut the library down each time, the third is the log directory.

#include "Module.h"

#include <cstdlib>
#include <cstring>

using namespace ZAV::TestSupport;

namespace {

using LogThroughPlugin = bool (*)(const char* directory, int first, bool finish);

/// \return what the plugin's function returned
bool logAndUnload(const char* path, const char* directory, int first, bool finish) {
    void* const plugin = loadModule(path);
    if (plugin == nullptr) {
        std::exit(2);
    }
    const auto log = reinterpret_cast<LogThroughPlugin>(functionIn(plugin, "logThroughPlugin"));
    const bool initialised = log(directory, first, finish);
    if (!unloadModule(plugin)) {
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
