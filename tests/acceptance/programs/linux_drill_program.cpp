// Logs from four threads while the fault named by the first argument occurs. The second argument is the log
// directory.

#include "ProcessEndSupport.h"

#include "log/LogMacros.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <locale>
#include <new>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace ZAV;
using namespace ZAV::Log;

namespace {

constexpr int THREADS = 4;
std::atomic<bool> hasMemory{true};

} // namespace

// These replace the standard library's operators; the array forms call them.

void* operator new(std::size_t size) {
    void* const memory = hasMemory ? std::malloc(size) : nullptr;
    if (memory != nullptr) {
        return memory;
    }
    throw std::bad_alloc();
}

// Not inlined: the compiler would warn of a mismatched call to free.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

/// For each thread, the number of the last message whose call has returned.
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

/// The numbers are in a shared file mapping, which the test reads later.
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

/// A type of the application that needs a stream.
struct Price {
    int value;
};

std::ostream& operator<<(std::ostream& stream, Price price) {
    return stream << price.value;
}

struct Grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\3"; }
};

/// Spends as much time as possible in locks of the standard libraries, which are never released in a child.
void lockStandardLibraries(const std::atomic<bool>& stopped) {
    while (!stopped) {
        const std::time_t now = std::time(nullptr);
        std::tm local;
        localtime_r(&now, &local);
        std::ostringstream stream;
    }
}

/// What a forked child may do: log at once, to all appenders, or initialise the library with its own files.
int live(int child, const std::string& directory) {
    const bool hasOwnFiles = child % 2 == 0;
    if (hasOwnFiles) {
        LogManager::finish();
        LogManager::init(directory + "/properties"); // reads a file
        LogManager::finish();
        TestSupport::initForEnd(directory + "/child");
    }
    LoggerFactory::getLogger("new.in.child").error("child", 0, "");
    ZAV_LOG_ERROR(LoggerFactory::getLogger("net"), "child " << 1000 << ' ' << Price{2000});
    const bool isFlushed = LogManager::flush(); // a hang here is a failure
    if (hasOwnFiles && !isFlushed) {
        return EXIT_FAILURE; // others may have been forked while the parent had no consumer
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

/// Other threads log, create loggers, deliver, lower and read levels, and repeatedly shut down and initialise
/// the library.
int forkWhileThreadsLog(const std::string& directory) {
    Returned returned{};
    std::ofstream(directory + "/properties") << "logger.net.level = DEBUG\n";
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
    std::locale::global(std::locale(std::locale(), new Grouping));
    std::thread locking([&stopped] { lockStandardLibraries(stopped); });
    std::thread steering([&] {
        while (!stopped) {
            LogManager::setLevelFor("net", Level::DEBUG, Util::TimeUtils::Time(1, Util::TimeUtils::MSEC));
            LogManager::appenders();
        }
    });
    bool endedWell = true;
    for (int child = 0; child < 60; ++child) {
        endedWell = forkChild(child, directory) && endedWell;
    }
    stopped = true;
    logging.join();
    restarting.join();
    locking.join();
    steering.join();
    return endedWell ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// The child only ends, and so does a child of its own.
int forkWithoutMemory() {
    LoggerFactory::getLogger("net").error("queued", 0, "");
    hasMemory = false;
    const auto forkOnce = [](auto inChild) {
        const pid_t process = fork();
        if (process == 0) {
            _exit(inChild());
        }
        int status = EXIT_FAILURE;
        return waitpid(process, &status, 0) == process && status == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    };
    const int result = forkOnce([forkOnce] { return forkOnce([] { return EXIT_SUCCESS; }); });
    hasMemory = true;
    return result;
}

} // namespace

int main(int, char** arguments) {
    const std::string directory = arguments[2];
    if (!TestSupport::initForEnd(directory)) {
        return EXIT_FAILURE;
    }
    const std::string way = arguments[1];
    return way == "kill"        ? killWhileThreadsLog(directory)
           : way == "no-memory" ? forkWithoutMemory()
                                : forkWhileThreadsLog(directory);
}
