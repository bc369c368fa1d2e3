#include "AcceptanceSupport.h"

#include "log/LogException.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>

using namespace ZAV;
using namespace ZAV::Log;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::inThreads;

namespace {

/// Keeps the texts of the messages that any threads write to it.
class SharedRecorder : public Appender {
public:
    SharedRecorder() : Appender("recorder") {}

    std::ptrdiff_t count(const std::string& text) {
        const std::lock_guard<std::mutex> lock(mutex_);
        return std::count(texts_.begin(), texts_.end(), text);
    }

protected:
    void doOutput(const LogMessage& message) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        texts_.push_back(message.getText());
    }

private:
    std::mutex mutex_;
    std::vector<std::string> texts_;
};

class FailingAppender : public Appender {
public:
    FailingAppender() : Appender("failing") {}

protected:
    void doOutput(const LogMessage&) override { throw LogException("out of order"); }
};

/// Logs each message again: once through the same logger, and through a logger of its own.
class EchoingAppender : public Appender {
public:
    EchoingAppender() : Appender("echoing") {}

protected:
    void doOutput(const LogMessage& message) override {
        if (message.getText() == "message") {
            LoggerFactory::getLogger(message.getLoggerName()).error("again", 0, "");
            LoggerFactory::getLogger("echo").error("echo", 0, "");
        }
    }
};

const char* const LOGGERS[] = {"net", "net.tcp", "db"};

/// Logs through every logger in answer to the report of a message, but not of an answer.
class LoggingListener : public CommandListener {
public:
    void onCommand(const std::string& report) override {
        if (report.find("ERROR answer") != std::string::npos) {
            return;
        }
        for (const char* name : LOGGERS) {
            LoggerFactory::getLogger(name).error("answer", 0, "");
        }
        ++reports_;
    }

    /// Waits until that many reports have come.
    void waitFor(int reports) const {
        while (reports_ < reports) {
            std::this_thread::yield();
        }
    }

private:
    std::atomic<int> reports_{0};
};

class Reentrancy : public TestSupport::Application {
protected:
    Reentrancy() { root_.addAppender(&recorder_); }
    ~Reentrancy() override { root_.removeAppender(&recorder_); }

    static constexpr int THREADS = 8;
    static constexpr int MESSAGES = 100;

    /// Several threads share each logger.
    static void logInThreads() {
        inThreads(THREADS, [](int thread) {
            Logger& logger = LoggerFactory::getLogger(LOGGERS[thread % 3]);
            for (int i = 0; i < MESSAGES; ++i) {
                logger.error("message", 0, "");
            }
        });
    }

    Logger& root_ = LoggerFactory::getRootLogger();
    SharedRecorder recorder_;
};

} // namespace

TEST_F(Reentrancy, AnAppenderMayLog) {
    EchoingAppender echoing;
    root_.addAppender(&echoing);
    logInThreads();
    root_.removeAppender(&echoing);
    for (const char* text : {"message", "again", "echo"}) {
        EXPECT_EQ(recorder_.count(text), THREADS * MESSAGES) << text;
    }
}

TEST_F(Reentrancy, AListenerMayLogThroughLoggersThatOtherThreadsHold) {
    FailingAppender failing;
    LoggingListener listener;
    LogManager::registerCommandListener("EXCEPTION", &listener);
    root_.addAppender(&failing);
    logInThreads(); // a hang here is the failure
    root_.removeAppender(&failing);
    EXPECT_EQ(recorder_.count("message"), THREADS * MESSAGES);
    EXPECT_EQ(recorder_.count("answer"), 3 * THREADS * MESSAGES);
}

TEST_F(Reentrancy, AListenerMayLogInTheConsumerThread) {
    LoggingListener listener;
    LogManager::registerCommandListener("EXCEPTION", &listener);
    ASSERT_TRUE(init("appender.broken = SimpleFileAppender\n"
                     "appender.broken.asynchronous = true\n"
                     "appender.broken.filters = broken\n"
                     "appender.broken.dir = DIR/missing\n"
                     "zav.log.AsynchronousDispatcher.waitingPeriod = 0\n"
                     "zav.log.AsynchronousDispatcher.maxQueueSize = -1\n"));
    inThreads(THREADS, [](int thread) {
        for (int i = 0; i < MESSAGES; ++i) {
            LoggerFactory::getLogger("broken").error("message", 0, "");
            LoggerFactory::getLogger(LOGGERS[thread % 3]).error("message", 0, "");
        }
    });
    listener.waitFor(THREADS * MESSAGES); // a hang here is the failure
    LogManager::finish();
    EXPECT_EQ(recorder_.count("answer"), 3 * THREADS * MESSAGES);
}

namespace {

/// Throws what the message names.
class ThrowingAppender : public Appender {
public:
    ThrowingAppender() : Appender("throwing") {}

protected:
    void doOutput(const LogMessage& message) override {
        if (message.getText() == "int") {
            throw 1;
        }
        if (message.getText() == "runtime_error") {
            throw std::runtime_error("unseen");
        }
        throw LogException("out of order");
    }
};

class ThrowingListener : public CommandListener {
public:
    void onCommand(const std::string&) override { throw std::string("thrown"); }
};

} // namespace

TEST_F(Reentrancy, WhateverAnAppenderThrowsIsReportedAndTheOthersGoOn) {
    ThrowingAppender throwing;
    TestSupport::RecordingListener listener;
    LogManager::registerCommandListener("EXCEPTION", &listener);
    root_.removeAppender(&recorder_);
    root_.addAppender(&throwing);
    root_.addAppender(&recorder_);
    for (const char* text : {"int", "runtime_error", "LogException"}) {
        EXPECT_NO_THROW(root_.error(text, 0, ""));
        EXPECT_EQ(recorder_.count(text), 1);
    }
    root_.removeAppender(&throwing);
    const std::string unknown = "Unknown exception from doOutput(msg).\nMsg = ";
    const std::string known = "LogException from doOutput(msg).\nException = out of order\nMsg = ";
    EXPECT_THAT(listener.arguments, ElementsAre(StartsWith(unknown), StartsWith(unknown), StartsWith(known)));
    EXPECT_THAT(listener.arguments[1], Not(HasSubstr("unseen")));
}

TEST_F(Reentrancy, WhateverAListenerThrowsReachesTheCallerAndLeavesNoLockBehind) {
    ThrowingAppender throwing;
    ThrowingListener listener;
    LogManager::registerCommandListener("EXCEPTION", &listener);
    LogManager::registerCommandListener("DynamicLogLevelFilterSoft", &listener);
    root_.addAppender(&throwing);
    EXPECT_THROW(root_.error("message", 0, ""), std::string);
    EXPECT_THROW(root_.setLevel(Level::DEBUG, true), std::string);
    EXPECT_EQ(root_.getLevel(), Level::WARNING);
    // Another thread can go on: the logger and the command bus are free.
    inThreads(1, [this](int) { EXPECT_THROW(root_.error("message", 0, ""), std::string); });
    root_.removeAppender(&throwing);
    EXPECT_EQ(recorder_.count("message"), 2);
}

TEST_F(Reentrancy, AListenerThatThrowsDoesNotEndTheConsumerThread) {
    ThrowingListener listener;
    ASSERT_TRUE(init("appender.broken = SimpleFileAppender\n"
                     "appender.broken.asynchronous = true\n"
                     "appender.broken.dir = DIR/missing\n"
                     "appender.working = SimpleFileAppender\n"
                     "appender.working.asynchronous = true\n"
                     "appender.working.dir = DIR\n"
                     "zav.log.AsynchronousDispatcher.waitingPeriod = 0\n"));
    LogManager::registerCommandListener("EXCEPTION", &listener);
    for (std::size_t messages = 1; messages <= 2; ++messages) {
        root_.error("message", 0, "");
        while (lastWordsOf("working").size() < messages) { // a hang here is the failure
            std::this_thread::yield();
        }
    }
}
