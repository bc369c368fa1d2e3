// Forks while messages are queued. The child logs too, and exits; if the first argument is "finish", it shuts
// the library down before. The second argument is the log directory.

#include "ProcessEndSupport.h"

#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
// The leak check may run while the consumer is still ending, and report what that still holds as leaked.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
    return "detect_leaks=0";
}
#endif

using namespace ZAV;
using TestSupport::logNumbers;

int main(int, char** arguments) {
    if (!TestSupport::initForEnd(arguments[2])) {
        return EXIT_FAILURE;
    }
    logNumbers(1, 5);
    const pid_t child = fork();
    if (child == 0) {
        Log::LoggerFactory::getLogger("net").error("child", 0, "");
        if (std::string(arguments[1]) == "finish") {
            Log::LogManager::finish();
        }
        std::exit(EXIT_SUCCESS);
    }
    int status = 0;
    const bool endedWell = child > 0 && waitpid(child, &status, 0) == child && status == 0;
    logNumbers(6, 10);
    return endedWell ? EXIT_SUCCESS : EXIT_FAILURE;
}
