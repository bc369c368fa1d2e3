#include "log/LogContext.h"
#include "log/LogManager.h"
#include "log/LogSession.h"
#include "log/LogValues.h"
#include "log/LoggerFactory.h"
#include "log/SystemAppenders.h"

#include <atomic>
#include <cstddef>
#include <iostream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Log = ZAV::Log;

namespace {

std::atomic<int> records{0};

void logRecord(const std::string& text) {
    Log::Logger& logger = Log::LoggerFactory::getLogger("net.tcp");
    ZAV_LOGV_INFO(logger, text, "number", ++records, "user.id", 7, "user-id", 8);
}

void logRecords(int count) {
    const Log::LogContext user("user", "\\ \"\x01");
    for (int logged = 0; logged < count; ++logged) {
        logRecord("record 100% %s \"\xc3\xbc\"\n\tsecond line");
    }
}

/// In four threads, and the last one in a child that is forked meanwhile.
void logBatch(int count) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([count] { logRecords(count / 4); });
    }
    const pid_t child = fork();
    if (child == 0) {
        records = -static_cast<int>(getpid());
        logRecord("of a child");
        _exit(0);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    waitpid(child, nullptr, 0);
}

} // namespace

/// Logs, for each number on standard input, that many records and one of a forked child, and answers with the
/// number of records that were reported as failed. In the end there are one of as many bytes as the second
/// argument says and one that holds NUL.
/// \param arguments the property file, and the size
int main(int, char** arguments) {
    Log::registerSystemAppenders();
    const Log::LogSession session(arguments[1]);
    for (int count = 0; std::cin >> count;) {
        logBatch(count);
        std::cout << Log::LogManager::statistics().failed << std::endl;
    }
    logRecord(std::string(static_cast<std::size_t>(std::stoul(arguments[2])), 'x'));
    logRecord(std::string("a\0b", 3));
}
