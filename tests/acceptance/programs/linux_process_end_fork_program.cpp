// Forks while messages are queued. The child logs too, and exits; the first argument is "finish" if it takes
// the library down before. The second argument is the directory of the logs.

#include "ProcessEndSupport.h"

#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

using namespace ZAV;
using TestSupport::logNumbers;

namespace {

[[noreturn]] void runChild(bool finish) {
    Log::LoggerFactory::getLogger("net").error("child", 0, "");
    if (finish) {
        Log::LogManager::finish();
    }
    std::exit(EXIT_SUCCESS);
}

bool endsWell(pid_t child) {
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}

} // namespace

int main(int, char** arguments) {
    const bool finish = std::string(arguments[1]) == "finish";
    if (!TestSupport::initForEnd(arguments[2])) {
        return EXIT_FAILURE;
    }
    logNumbers(1, 5);
    const pid_t child = fork();
    if (child == 0) {
        runChild(finish);
    }
    if (child < 0 || !endsWell(child)) {
        return EXIT_FAILURE;
    }
    logNumbers(6, 10);
    return EXIT_SUCCESS;
}
