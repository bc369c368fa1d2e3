// Logs from four threads while the process is hurt in the way that the first argument names. The second
// argument is the directory of the logs.

#include "ProcessEndSupport.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace ZAV;
using namespace ZAV::Log;

namespace {

constexpr int THREADS = 4;

/// The number of the last message of each thread for which the call has returned.
using Returned = std::atomic<int>[THREADS];

void logTo(Returned& returned, const std::atomic<bool>& stopped) {
    const auto log = [&](int thread) {
        for (int number = 1; !stopped; ++number) {
            LoggerFactory::getLogger("net").error(std::to_string(thread) + ":" + std::to_string(number), 0,
                                                  "");
            returned[thread] = number;
            if (number % 50 == 0) {
                LogManager::flush(); // so that the queue stays short
            }
        }
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back(log, thread);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// The numbers are in a file that the process shares with whoever reads it later.
int killWhileThreadsLog(const std::string& directory) {
    const int file = open((directory + "/returned").c_str(), O_RDWR | O_CREAT, 0600);
    if (ftruncate(file, sizeof(Returned)) != 0) {
        return EXIT_FAILURE;
    }
    void* const memory = mmap(nullptr, sizeof(Returned), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    Returned& returned = *static_cast<Returned*>(memory);
    std::thread([&returned] {
        while (returned[THREADS - 1] < 500) {
            std::this_thread::yield();
        }
        kill(getpid(), SIGKILL);
    }).detach();
    logTo(returned, false);
    return EXIT_FAILURE; // it was not killed
}

/// What a forked child may do: log at once, to all appenders, or set the library up for files of its own.
int live(int child, const std::string& directory) {
    const bool hasOwnFiles = child % 2 == 0;
    if (hasOwnFiles) {
        LogManager::finish();
        TestSupport::initForEnd(directory + "/child");
    }
    LoggerFactory::getLogger("new.in.child").error("child", 0, "");
    LoggerFactory::getLogger("net").error("child", 0, "");
    const bool isFlushed = LogManager::flush(); // a hang here is a failure
    if (hasOwnFiles && !isFlushed) {
        return EXIT_FAILURE; // another child may have come while the parent had no consumer
    }
    if (child % 3 == 0) {
        LogManager::finish();
    }
    return EXIT_SUCCESS;
}

bool forkChild(int child, const std::string& directory) {
    const pid_t process = fork();
    if (process == 0) {
        std::exit(live(child, directory));
    }
    int status = EXIT_FAILURE;
    return waitpid(process, &status, 0) == process && status == 0; // a hang here is a failure
}

/// Other threads log, make loggers, deliver, lower levels and look at them, and take the library down and set
/// it up again.
int forkWhileThreadsLog(const std::string& directory) {
    Returned returned{};
    std::atomic<bool> stopped{false};
    std::thread logging([&] { logTo(returned, stopped); });
    std::thread restarting([&] {
        for (int number = 0; !stopped; ++number) {
            LoggerFactory::getLogger("made" + std::to_string(number % 1000)).error("made", 0, "");
            LogManager::flush();
            LogManager::finish();
            TestSupport::initForEnd(directory, "0");
        }
    });
    std::thread steering([&] {
        while (!stopped) {
            LogManager::setLevelFor("net", Level::DEBUG, Util::TimeUtils::Time(1, Util::TimeUtils::MSEC));
            LogManager::appenders();
        }
    });
    bool endedWell = true;
    for (int child = 0; child < 30; ++child) {
        endedWell = forkChild(child, directory) && endedWell;
    }
    stopped = true;
    logging.join();
    restarting.join();
    steering.join();
    return endedWell ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int, char** arguments) {
    const std::string directory = arguments[2];
    if (!TestSupport::initForEnd(directory)) {
        return EXIT_FAILURE;
    }
    return std::string(arguments[1]) == "kill" ? killWhileThreadsLog(directory)
                                               : forkWhileThreadsLog(directory);
}
