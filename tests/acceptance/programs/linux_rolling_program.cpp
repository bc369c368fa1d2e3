// Logs into a file that is constantly rolled and compressed, until it kills itself at a random moment.
// Arguments: the number of the run, the microseconds until it is killed, and the directory. With 0 it is not
// killed, but ends when everything is compressed.

#include "log/LogManager.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;

namespace {

/// How many calls have returned, in a memory-mapped file, which outlives the process.
std::atomic<int>& returnedCalls(const std::string& directory, const std::string& run) {
    const int file = open((directory + "/returned." + run).c_str(), O_RDWR | O_CREAT, 0600);
    if (ftruncate(file, sizeof(std::atomic<int>)) != 0) {
        std::exit(EXIT_FAILURE);
    }
    void* const memory = mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    return *static_cast<std::atomic<int>*>(memory);
}

/// The names of uncompressed rolled files end in a time or a number.
bool isAllPacked(const std::string& directory) {
    for (const auto& entry : std::filesystem::directory_iterator(directory + "/logs")) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".log" && extension != ".gz") {
            return false;
        }
    }
    return true;
}

/// A hang here is a failure.
void awaitPacking(const std::string& directory) {
    while (!isAllPacked(directory)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace

int main(int, char** arguments) {
    const std::string run = arguments[1];
    const std::chrono::microseconds life(std::atol(arguments[2]));
    const std::string directory = arguments[3];
    Util::Properties properties{{"logger.root.level", "INFO"},
                                {"appender.app", "RollingFileAppender"},
                                {"appender.app.dir", directory + "/logs"},
                                {"appender.app.rollSize", "2 KB"},
                                {"appender.app.compress", "gzip"}};
    std::atomic<int>& returned = returnedCalls(directory, run);
    if (life != life.zero()) {
        std::thread([life] {
            std::this_thread::sleep_for(life);
            kill(getpid(), SIGKILL);
        }).detach();
    }
    LogManager::init(properties);
    Logger& logger = LoggerFactory::getLogger("net");
    if (life == life.zero()) {
        awaitPacking(directory); // of what the start has begun
        logger.info(run + ":1", 0, "");
        returned = 1;
        awaitPacking(
            directory); // of the file that this line may have rolled; `finish` would leave it uncompressed
        LogManager::finish();
        return EXIT_SUCCESS;
    }
    for (int number = 1;; ++number) {
        logger.info(run + ":" + std::to_string(number), 0, "");
        returned = number;
        std::this_thread::sleep_for(std::chrono::microseconds(20)); // to limit the number of files
    }
}
