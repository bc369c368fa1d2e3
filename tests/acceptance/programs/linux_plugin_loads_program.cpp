// Repeatedly loads a plugin, which logs and is unloaded before its messages are delivered.
// usage: PLUGIN DIRECTORY

#include "Module.h"

#include "log/LogManager.h"
#include "zav-util/Properties.h"

#include <dlfcn.h>
#include <iostream>
#include <malloc.h>

using namespace ZAV;
using namespace ZAV::Log;

namespace {

int fail(const char* what) {
    std::cerr << what << '\n';
    return EXIT_FAILURE;
}

/// \return null if the plugin was loaded, has logged and was unloaded; otherwise what went wrong
const char* logOnce(const char* path, int number) {
    void* const plugin = TestSupport::loadModule(path);
    if (plugin == nullptr) {
        return "not loaded";
    }
    using LogFromPlugin = void (*)(int);
    reinterpret_cast<LogFromPlugin>(TestSupport::functionIn(plugin, "logFromPlugin"))(number);
    TestSupport::unloadModule(plugin);
    return dlopen(path, RTLD_NOW | RTLD_NOLOAD) == nullptr ? nullptr : "not unloaded";
}

} // namespace

int main(int, char** arguments) {
    Util::Properties properties;
    properties["appender.plugin"] = "SimpleFileAppender";
    properties["appender.plugin.asynchronous"] = "true";
    properties["appender.plugin.dir"] = arguments[2];
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = "3600";
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "1000000";
    LogManager::init(properties);
    constexpr int LOADS = 10'000;
    constexpr int LOADS_A_ROUND = 100;
    std::size_t bytesBefore = 0;
    for (int number = 0; number < LOADS; ++number) {
        if (const char* const failure = logOnce(arguments[1], number)) {
            return fail(failure);
        }
        if (number % LOADS_A_ROUND == LOADS_A_ROUND - 1) {
            LogManager::flush();
        }
        if (number == LOADS / 10) {
            bytesBefore = mallinfo2().uordblks;
        }
    }
    // Memory kept by a round of the consumer, or by a text buffer that has grown.
    constexpr std::size_t SLACK = 64 * 1024;
    const std::size_t bytes = mallinfo2().uordblks;
    LogManager::finish();
    return bytes <= bytesBefore + SLACK ? EXIT_SUCCESS : fail("memory has grown");
}
