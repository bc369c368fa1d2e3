// Ends in the way that its first argument names, with the exit code 0. The second argument is the directory
// of the logs. A way that fails to end the process gives another code.

#include "ProcessEndSupport.h"

#include "log/Appender.h"
#include "log/CommandListener.h"

#include <atomic>
#include <cstdlib>
#include <map>
#include <memory>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using TestSupport::logNumbers;

namespace {

constexpr int NOT_ENDED = 1;

int returnFromMain() {
    return EXIT_SUCCESS;
}

int callExit() {
    std::exit(EXIT_SUCCESS);
}

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

/// Of static storage duration, it logs when the process is well on its way to the end.
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

/// Shows a call after its end to a sanitizer: it uses memory of its own.
class RememberingListener : public CommandListener {
public:
    void onCommand(const std::string& argument) override { last_ = argument; }

private:
    std::string last_;
};

/// The appender fails when the listener is gone.
int loseListener() {
    const auto listener = std::make_unique<RememberingListener>();
    LogManager::registerCommandListener("EXCEPTION", listener.get());
    LoggerFactory::getLogger("broken").error("11", 0, "");
    logNumbers(12, 12);
    return EXIT_SUCCESS;
}

class ExitingListener : public CommandListener {
public:
    void onCommand(const std::string&) override { std::exit(EXIT_SUCCESS); }
};

int exitInListener() {
    ExitingListener listener;
    LogManager::registerCommandListener("exit", &listener);
    LogManager::command("exit", "");
    return NOT_ENDED;
}

class ExitingAppender : public Appender {
public:
    ExitingAppender() : Appender("exiting") {}

protected:
    void doOutput(const LogMessage&) override { std::exit(EXIT_SUCCESS); }
};

int exitInAppender() {
    ExitingAppender appender;
    LoggerFactory::getLogger("exit").addAppender(&appender);
    LoggerFactory::getLogger("exit").error("exit", 0, "");
    return NOT_ENDED;
}

/// Here the consumer thread itself ends the process, since a report of its failing appender comes in it.
int exitInConsumerThread(const std::string& directory) {
    ExitingListener listener;
    Util::Properties properties;
    properties["appender.broken"] = "SimpleFileAppender";
    properties["appender.broken.asynchronous"] = "true";
    properties["appender.broken.dir"] = directory + "/missing";
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = "0";
    LogManager::init(properties);
    LogManager::registerCommandListener("EXCEPTION", &listener);
    LoggerFactory::getRootLogger().error("exit", 0, "");
    while (true) { // until the process ends
        std::this_thread::yield();
    }
}

int endAs(const std::string& way) {
    const std::map<std::string, int (*)()> ways = {{"return", returnFromMain},
                                                   {"exit", callExit},
                                                   {"exit-while-threads-log", exitWhileThreadsLog},
                                                   {"static-object", logFromStaticObject},
                                                   {"lost-listener", loseListener},
                                                   {"exit-in-listener", exitInListener},
                                                   {"exit-in-appender", exitInAppender}};
    return ways.at(way)();
}

} // namespace

int main(int, char** arguments) {
    const std::string way = arguments[1];
    const std::string directory = arguments[2];
    if (way == "exit-in-consumer-thread") {
        return exitInConsumerThread(directory);
    }
    if (!TestSupport::initForEnd(directory)) {
        return NOT_ENDED;
    }
    logNumbers(1, 10);
    return endAs(way);
}
