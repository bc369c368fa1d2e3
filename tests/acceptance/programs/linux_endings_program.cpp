// Ends in the way named by the first argument, with exit code 0, at a difficult moment for the library. The
// second argument is the log directory. What it has logged is in the file "accepted", one word per message.

#include "Calling.h"
#include "ProcessEndSupport.h"

#include "log/LogMessage.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <map>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;

namespace {

constexpr int NOT_ENDED = 1;
std::atomic<int> untilPause{0}; ///< locks that threads other than the first still take before they pause
std::atomic<bool> isPaused{false};
thread_local bool isFirstThread = false;
std::string directory;

} // namespace

// Replaces the system's function, to prolong the moment between two steps of the consumer.
extern "C" __attribute__((visibility("default"))) int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    using Lock = int (*)(pthread_mutex_t*);
    static const Lock lock = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    if (!isFirstThread && untilPause > 0 && --untilPause == 0) {
        isPaused = true;
        usleep(300'000);
    }
    return lock(mutex);
}

namespace {

Logger& logger() {
    return LoggerFactory::getLogger("net");
}

/// A message counts as accepted once its call has returned.
void logAccepted(int first, int last) {
    static const int file = open((directory + "/accepted").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    for (int number = first; number <= last; ++number) {
        const std::string word = std::to_string(number);
        logger().error(word, 0, "");
        static_cast<void>(!write(file, (word + "\n").c_str(), word.size() + 1));
    }
}

[[noreturn]] void waitForEver() {
    std::promise<void>().get_future().wait();
    std::abort();
}

CallingListener exiting([](const std::string&) { std::exit(EXIT_SUCCESS); });

// exit inside an appender or a listener

int exitInAppender() {
    logger().error("delivered", 0, ""); // main has attached an appender that exits, before the others
    return NOT_ENDED;
}

int exitInListener() {
    LogManager::registerCommandListener("exit", &exiting);
    LogManager::command("exit", "");
    return NOT_ENDED;
}

/// The consumer's first appender fails in the middle of a batch, and the listener to that ends the process.
int exitInConsumer() {
    LogManager::registerCommandListener("EXCEPTION", &exiting);
    LoggerFactory::getLogger("broken").error("delivered", 0, "");
    for (int number = 11;; ++number) {
        logAccepted(number, number);
    }
}

/// Both end the process.
int returnWhileTheConsumerExits() {
    static std::promise<void> returns;
    static CallingListener exitingToo([](const std::string&) {
        returns.get_future().wait();
        std::exit(EXIT_SUCCESS);
    });
    LogManager::registerCommandListener("EXCEPTION", &exitingToo);
    LoggerFactory::getLogger("broken").error("delivered", 0, "");
    logAccepted(11, 3000);
    returns.set_value();
    return EXIT_SUCCESS;
}

/// The consumer pauses before its lock of that number, so that in some run it has taken a batch but not begun
/// it.
int exitWhileTheConsumerPauses(int lock) {
    LogManager::registerCommandListener("exit", &exiting);
    untilPause = lock;
    logAccepted(11, 200);
    while (!isPaused && LogManager::statistics().waiting > 0) {
        std::this_thread::yield();
    }
    LogManager::command("exit", "");
    return NOT_ENDED;
}

// exit while somebody is stuck

/// The consumer is stuck in a write: "queued" is a pipe that is full.
int returnWhileAFileIsStuck() {
    logAccepted(11, 20);
    LogManager::flush(Util::TimeUtils::Time(500, Util::TimeUtils::MSEC)); // so that the consumer is at it
    return EXIT_SUCCESS;
}

/// The consumer is stuck in a listener that waits for main.
int returnWhileAListenerWaitsForMain() {
    std::promise<void> waits;
    CallingListener waiting([&waits](const std::string&) {
        waits.set_value();
        waitForEver();
    });
    LogManager::registerCommandListener("EXCEPTION", &waiting);
    LoggerFactory::getLogger("broken").error("delivered", 0, "");
    waits.get_future().wait();
    logAccepted(11, 20);
    std::exit(EXIT_SUCCESS);
}

/// Another thread is stuck in a listener, which is destroyed at the end, and holds the command bus.
int returnWhileACommandWaitsForMain() {
    static std::promise<void> waits;
    static CallingListener waiting([](const std::string&) {
        waits.set_value();
        waitForEver();
    });
    LogManager::registerCommandListener("wait", &waiting);
    std::thread([] { LogManager::command("wait", ""); }).detach();
    waits.get_future().wait();
    logAccepted(11, 20);
    std::exit(EXIT_SUCCESS);
}

/// Another thread is stuck in a synchronous appender, and holds its logger.
int returnWhileALoggerIsStuck() {
    std::promise<void> waits;
    CallingAppender stuck([&waits](const LogMessage&) {
        waits.set_value();
        waitForEver();
    });
    LoggerFactory::getLogger("stuck").addAppender(&stuck);
    std::thread([] { LoggerFactory::getLogger("stuck").error("never", 0, ""); }).detach();
    waits.get_future().wait();
    logAccepted(11, 20);
    std::exit(EXIT_SUCCESS);
}

// only the consumer is left

int endTheMainThread() {
    pthread_exit(nullptr);
}

/// The system then reports the process as a zombie, since it identifies it by its first thread.
void waitUntilMainHasEnded() {
    for (std::string line; line.find(") Z ") == std::string::npos; std::this_thread::yield()) {
        std::getline(std::ifstream("/proc/self/stat"), line);
    }
}

int endTheMainThreadLast() {
    std::thread([] {
        logAccepted(11, 20);
        waitUntilMainHasEnded();
        logAccepted(21, 30);
    }).detach();
    pthread_exit(nullptr);
}

/// The child's only thread is one that returns.
int returnFromTheThreadOfAChild() {
    int status = EXIT_FAILURE;
    std::thread([&status] {
        const pid_t child = fork();
        if (child == 0) {
            logAccepted(11, 20);
            return;
        }
        waitpid(child, &status, 0);
    }).join();
    return status == 0 ? EXIT_SUCCESS : NOT_ENDED;
}

/// A listener forks in the consumer thread and returns in both processes: the batch is the parent's, and the
/// child ends after delivering what it logs itself.
int forkInConsumer() {
    std::promise<int> ended;
    CallingListener forking([&ended](const std::string&) {
        const pid_t child = fork();
        if (child == 0) {
            logAccepted(21, 21);
            return;
        }
        int status = EXIT_FAILURE;
        waitpid(child, &status, 0);
        ended.set_value(status);
    });
    LogManager::registerCommandListener("EXCEPTION", &forking);
    LoggerFactory::getLogger("broken").error("11", 0, "");
    logAccepted(12, 20);
    LogManager::flush();
    const int status = ended.get_future().get();
    LogManager::finish();
    return status == 0 ? EXIT_SUCCESS : NOT_ENDED;
}

// overflow = block

/// The consumer's listener logs through the logger that the producers keep busy.
int blockProducers() {
    constexpr std::uint64_t LIMIT = 100;
    constexpr int PRODUCERS = 8;
    constexpr int MESSAGES = 20'000;
    CallingListener answering([](const std::string&) { logger().error("answer", 0, ""); });
    LogManager::registerCommandListener("EXCEPTION", &answering);
    std::atomic<int> running{PRODUCERS};
    std::vector<std::thread> producers;
    for (int producer = 0; producer < PRODUCERS; ++producer) {
        producers.emplace_back([&running] {
            for (int message = 0; message < MESSAGES; ++message) {
                logger().error("produced", 0, "");
                if (message % 100 == 0) {
                    LoggerFactory::getLogger("broken").error("produced", 0,
                                                             ""); // the listener answers its report
                }
            }
            --running;
        });
    }
    std::uint64_t mostWaiting = 0;
    while (running > 0) {
        mostWaiting = std::max(mostWaiting, LogManager::statistics().waiting);
        std::this_thread::yield();
    }
    for (std::thread& producer : producers) {
        producer.join();
    }
    LogManager::finish();
    // The batch being delivered counts as waiting, too. Answers do not wait for room.
    std::printf("most waiting: %llu\n", static_cast<unsigned long long>(mostWaiting));
    return mostWaiting <= 3 * LIMIT ? EXIT_SUCCESS : NOT_ENDED;
}

struct Way {
    int (*end)();
    const char* waitingPeriod;
};

} // namespace

int main(int count, char** arguments) {
    const std::string way = arguments[1];
    directory = arguments[count - 1];
    isFirstThread = true;
    const std::map<std::string, Way> ways = {
        {"exit-in-appender", {exitInAppender, "3600"}},
        {"exit-in-listener", {exitInListener, "0"}},
        {"exit-in-consumer", {exitInConsumer, "0"}},
        {"return-while-the-consumer-exits", {returnWhileTheConsumerExits, "0"}},
        {"return-while-a-file-is-stuck", {returnWhileAFileIsStuck, "0"}},
        {"return-while-a-listener-waits", {returnWhileAListenerWaitsForMain, "0"}},
        {"return-while-a-command-waits", {returnWhileACommandWaitsForMain, "3600"}},
        {"return-while-a-logger-is-stuck", {returnWhileALoggerIsStuck, "3600"}},
        {"main-thread-ends", {endTheMainThread, "3600"}},
        {"main-thread-ends-prompt", {endTheMainThread, "0"}},
        {"main-thread-ends-last", {endTheMainThreadLast, "1"}},
        {"thread-of-child-returns", {returnFromTheThreadOfAChild, "3600"}},
        {"consumer-forks", {forkInConsumer, "3600"}},
        {"block", {blockProducers, "0"}}};
    static CallingAppender appender([](const LogMessage& message) {
        if (message.getText() == "delivered") {
            std::exit(EXIT_SUCCESS);
        }
    });
    if (way == "exit-in-appender") {
        logger().addAppender(&appender); // before the others
    }
    if (way == "return-while-a-file-is-stuck") {
        const std::string pipe = directory + "/pipe";
        mkfifo(pipe.c_str(), 0600);
        const int end = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
        const std::vector<char> page(4096);
        while (write(end, page.data(), page.size()) > 0) {
        }
        static_cast<void>(!symlink(pipe.c_str(), (directory + "/queued").c_str()));
    }
    if (way == "exit-while-the-consumer-pauses") {
        initForEnd(directory, "0");
        logAccepted(1, 10);
        return exitWhileTheConsumerPauses(std::stoi(arguments[2]));
    }
    if (!initForEnd(directory, ways.at(way).waitingPeriod)) {
        return NOT_ENDED;
    }
    if (way == "block") {
        Util::Properties properties;
        properties["appender.broken"] = "SimpleFileAppender";
        properties["appender.broken.asynchronous"] = "true";
        properties["appender.broken.filters"] = "broken";
        properties["appender.broken.dir"] = directory + "/missing";
        properties["zav.log.AsynchronousDispatcher.overflow"] = "block";
        properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "100";
        LogManager::finish();
        LogManager::init(properties);
        return ways.at(way).end();
    }
    logAccepted(1, 10);
    return ways.at(way).end();
}
