// Lower bounds for any logger: the system calls and the instructions that each of them needs.

#include "Workload.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>

namespace {

using namespace Bench;

const std::string LINE =
    "2013.05.07 14:03:27:123000 net.tcp Socket.cpp:120 INFO " + std::string(SampleLine::TEXT) + "\n";
const std::string LINE_WITH_PROCESS = "2013.05.07 14:03:27:123000 compare_zav 12345 hostname net.tcp "
                                      "Socket.cpp:120 INFO " +
                                      std::string(SampleLine::TEXT) + "\n";

/// A file open for appending.
class AppendedFile {
public:
    explicit AppendedFile(const std::string& path)
        : descriptor_(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)) {
        if (descriptor_ < 0) {
            throw std::system_error(errno, std::generic_category(), path);
        }
    }
    AppendedFile(const AppendedFile&) = delete;
    AppendedFile& operator=(const AppendedFile&) = delete;
    ~AppendedFile() { ::close(descriptor_); }

    void write(const std::string& line) const {
        if (::write(descriptor_, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
            throw std::system_error(errno, std::generic_category(), "write");
        }
    }

private:
    int descriptor_;
};

void writeLines(const Task& task) {
    const AppendedFile file(task.file());
    measureSynchronous(task, [&file](std::size_t) { return [&file](std::size_t) { file.write(LINE); }; });
}

void reopenFile(const Task& task) {
    const auto call = [path = task.file()](std::size_t) { AppendedFile(path).write(LINE_WITH_PROCESS); };
    FileFormat format;
    format.pattern = SampleLine::patternWithProcess();
    measureWritingCalls(
        task, REOPENED_MESSAGES, [&call](std::size_t) { return call; }, [&task] { return task.file(); },
        format);
}

void readClock(const Task& task) {
    std::chrono::system_clock::time_point latest;
    const auto call = [&latest](std::size_t) { latest = std::chrono::system_clock::now(); };
    const Timing timing = runCheapCalls(task, [&call](std::size_t) { return call; });
    if (latest.time_since_epoch().count() == 0) {
        throw std::runtime_error("the clock stands still");
    }
    printFigure("call_ns", timing.nanosecondsPerCall);
}

void takeLock(const Task& task) {
    std::mutex mutex;
    std::size_t count = 0;
    const auto call = [&](std::size_t) {
        const std::lock_guard<std::mutex> lock(mutex);
        ++count;
    };
    const Timing timing = runCheapCalls(task, [&call](std::size_t) { return call; });
    if (count == 0) {
        throw std::runtime_error("the lock was never taken");
    }
    printFigure("call_ns", timing.nanosecondsPerCall);
}

/// The minimum of a rejected call.
void loadAndCompare(const Task& task) {
    std::atomic<int> level(40);
    std::atomic<std::size_t> accepted(0);
    const auto call = [&](std::size_t) {
        if (30 >= level.load(std::memory_order_relaxed)) {
            accepted.fetch_add(1);
        }
    };
    const Timing timing = runCheapCalls(task, [&call](std::size_t) { return call; });
    level.store(20);
    call(0);
    if (accepted.load() != 1) {
        throw std::runtime_error("the level was not compared");
    }
    printFigure("call_ns", timing.nanosecondsPerCall);
}

} // namespace

int main(int argc, char** argv) {
    return runWorkloads(argc, argv,
                        {{"write", writeLines},
                         {"reopen", reopenFile},
                         {"clock", readClock},
                         {"lock", takeLock},
                         {"load", loadAndCompare}});
}
