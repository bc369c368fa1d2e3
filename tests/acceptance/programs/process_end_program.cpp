// Ends in the way named by its first argument, with exit code 0. The second argument is the log directory. A
// way that fails to end the process gives another code.

#include "Calling.h"
#include "ProcessEndSupport.h"

#include "log/LogMessage.h"

#include <atomic>
#include <cstdlib>
#include <future>
#include <map>
#include <memory>
#include <thread>

#if defined(__SANITIZE_ADDRESS__)
// A thread that ends the process from inside an appender leaks what its stack frames own.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
    return "detect_leaks=0";
}
#endif

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;

namespace {

constexpr int NOT_ENDED = 1;
constexpr int THREADS = 8;
std::atomic<int> loggedBy[THREADS];

void logWithoutEnd(int thread) {
    Logger& logger = LoggerFactory::getLogger("thread." + std::to_string(thread));
    for (int number = 0;; ++number) {
        logger.error(std::to_string(thread) + ":" + std::to_string(number), 0, "");
        loggedBy[thread] = number;
        std::this_thread::yield();
    }
}

int exitWhileThreadsLog() {
    for (int thread = 0; thread < THREADS; ++thread) {
        std::thread(logWithoutEnd, thread).detach();
    }
    for (const std::atomic<int>& logged : loggedBy) {
        while (logged < 100) {
            std::this_thread::yield();
        }
    }
    std::exit(EXIT_SUCCESS);
}

/// Has static storage duration, so it logs late during the end of the process.
class LastWord {
public:
    ~LastWord() {
        if (wanted) {
            logNumbers(11, 12);
        }
    }
    bool wanted = false;
};

LastWord lastWord;

int logFromStaticObject() {
    lastWord.wanted = true;
    return EXIT_SUCCESS;
}

/// The appender fails after the listener was destroyed.
int loseListener() {
    std::string lastReport; // lets a sanitizer detect a call after its destruction
    const auto listener = std::make_unique<CallingListener>(
        [lastReport](const std::string& report) mutable { lastReport = report; });
    LogManager::registerCommandListener("EXCEPTION", listener.get());
    LoggerFactory::getLogger("broken").error("11", 0, "");
    logNumbers(12, 12);
    return EXIT_SUCCESS;
}

int exitInListener() {
    CallingListener listener([](const std::string&) { std::exit(EXIT_SUCCESS); });
    LogManager::registerCommandListener("exit", &listener);
    LogManager::command("exit", "");
    return NOT_ENDED;
}

int exitInAppender() {
    CallingAppender appender([](const LogMessage&) { std::exit(EXIT_SUCCESS); });
    LoggerFactory::getLogger("exit").addAppender(&appender);
    LoggerFactory::getLogger("exit").error("exit", 0, "");
    return NOT_ENDED;
}

/// The listener logs through a logger that another thread holds until the process ends.
int exitWithDeferredMessage() {
    std::promise<void> held;
    CallingAppender holding([&held](const LogMessage&) {
        held.set_value();
        std::promise<void>().get_future().wait();
    });
    Logger& logger = LoggerFactory::getLogger("held");
    logger.addAppender(&holding);
    std::thread([&logger] { logger.error("held", 0, ""); }).detach();
    held.get_future().wait();
    CallingListener listener([&logger](const std::string&) {
        logger.error("11", 0, "");
        std::exit(EXIT_SUCCESS);
    });
    LogManager::registerCommandListener("exit", &listener);
    LogManager::command("exit", "");
    return NOT_ENDED;
}

/// Meanwhile a thread is writing what its listener had to defer.
int exitWhileDeferredIsWritten() {
    std::promise<void> held;
    std::promise<void> released;
    std::promise<void> written;
    CallingAppender slow([&](const LogMessage& message) {
        const bool isFirst = message.getText() == "held";
        (isFirst ? held : written).set_value();
        (isFirst ? released : *new std::promise<void>).get_future().wait();
    });
    Logger& logger = LoggerFactory::getLogger("slow");
    logger.addAppender(&slow);
    std::thread([&logger] { logger.error("held", 0, ""); }).detach();
    held.get_future().wait();
    CallingListener listener([&](const std::string&) {
        logger.error("11", 0, "");
        released.set_value();
    });
    LogManager::registerCommandListener("log", &listener);
    std::thread([] { LogManager::command("log", ""); }).detach();
    written.get_future().wait();
    std::exit(EXIT_SUCCESS);
}

/// Here the consumer thread itself ends the process, since the report of its failing appender is delivered in
/// it.
int exitInConsumerThread() {
    CallingListener listener([](const std::string&) { std::exit(EXIT_SUCCESS); });
    LogManager::registerCommandListener("EXCEPTION", &listener);
    LoggerFactory::getLogger("broken").error("exit", 0, "");
    while (true) { // until the process ends
        std::this_thread::yield();
    }
}

} // namespace

int main(int, char** arguments) {
    const std::string way = arguments[1];
    const std::map<std::string, int (*)()> ways = {
        {"return", [] { return EXIT_SUCCESS; }},
        {"exit", []() -> int { std::exit(EXIT_SUCCESS); }},
        {"exit-while-threads-log", exitWhileThreadsLog},
        {"static-object", logFromStaticObject},
        {"lost-listener", loseListener},
        {"exit-in-listener", exitInListener},
        {"exit-in-appender", exitInAppender},
        {"exit-with-deferred-message", exitWithDeferredMessage},
        {"exit-while-deferred-is-written", exitWhileDeferredIsWritten},
        {"exit-in-consumer-thread", exitInConsumerThread}};
    const std::string waitingPeriod = way == "exit-in-consumer-thread" ? "0" : "3600";
    if (!initForEnd(arguments[2], waitingPeriod)) {
        return NOT_ENDED;
    }
    logNumbers(1, 10);
    return ways.at(way)();
}
