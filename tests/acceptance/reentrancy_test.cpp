#include "AcceptanceSupport.h"

#include "log/LogException.h"

#include <atomic>
#include <future>
#include <mutex>

using namespace ZAV;
using namespace ZAV::Log;
using namespace testing;
using TestSupport::CallingAppender;
using TestSupport::CallingListener;
using TestSupport::inThreads;
using TestSupport::textsOf;

namespace {

const char* const LOGGERS[] = {"net", "net.tcp", "db"};

class Reentrancy : public TestSupport::Application {
protected:
    static constexpr int THREADS = 8;
    static constexpr int MESSAGES = 100;

    /// Several threads share each logger.
    static void logInThreads() {
        inThreads(THREADS, [](int thread) {
            for (int i = 0; i < MESSAGES; ++i) {
                LoggerFactory::getLogger("broken").error("message", 0, "");
                LoggerFactory::getLogger(LOGGERS[thread % 3]).error("message", 0, "");
            }
        });
    }

    /// How many messages with that text have been written by any thread.
    std::ptrdiff_t count(const std::string& text) const {
        const std::vector<std::string> texts = textsOf(capture_);
        return std::count(texts.begin(), texts.end(), text);
    }

    Logger& root_ = LoggerFactory::getRootLogger();
    CallingAppender failing_{[](const LogMessage& message) {
        if (message.getText() == "int") {
            throw 1;
        }
        if (message.getText() == "runtime_error") {
            throw std::runtime_error("unseen");
        }
        throw LogException("out of order");
    }};
    CallingListener throwing_{[](const std::string&) { throw std::string("thrown"); }};
    std::atomic<int> reports_{0};
    /// Logs through every logger in answer to each report of a message, but not of an answer.
    CallingListener logging_{[this](const std::string& report) {
        if (report.find("ERROR answer") != std::string::npos) {
            return;
        }
        for (const char* name : LOGGERS) {
            LoggerFactory::getLogger(name).error("answer", 0, "");
        }
        ++reports_;
    }};

private:
    const LogCapture capture_{root_, Level::WARNING};
};

} // namespace

TEST_F(Reentrancy, AnAppenderMayLog) {
    CallingAppender echoing([](const LogMessage& message) {
        if (message.getText() == "message") {
            LoggerFactory::getLogger(message.getLoggerName()).error("again", 0, "");
            LoggerFactory::getLogger("echo").error("echo", 0, "");
        }
    });
    root_.addAppender(&echoing);
    logInThreads();
    root_.removeAppender(&echoing);
    for (const char* text : {"message", "again", "echo"}) {
        EXPECT_EQ(count(text), 2 * THREADS * MESSAGES) << text;
    }
}

TEST_F(Reentrancy, AListenerMayLogThroughLoggersThatOtherThreadsHold) {
    LogManager::registerCommandListener("EXCEPTION", &logging_);
    root_.addAppender(&failing_);
    logInThreads(); // a hang here is the failure
    root_.removeAppender(&failing_);
    EXPECT_EQ(count("message"), 2 * THREADS * MESSAGES);
    EXPECT_EQ(count("answer"), 3 * 2 * THREADS * MESSAGES);
}

TEST_F(Reentrancy, AListenerMayLogInTheConsumerThread) {
    LogManager::registerCommandListener("EXCEPTION", &logging_);
    ASSERT_TRUE(init("appender.broken = SimpleFileAppender\n"
                     "appender.broken.asynchronous = true\n"
                     "appender.broken.filters = broken\n"
                     "appender.broken.dir = DIR/missing\n"
                     "zav.log.AsynchronousDispatcher.waitingPeriod = 0\n"
                     "zav.log.AsynchronousDispatcher.maxQueueSize = -1\n"));
    logInThreads();
    while (reports_ < THREADS * MESSAGES) { // a hang here is the failure
        std::this_thread::yield();
    }
    LogManager::finish();
    EXPECT_EQ(count("answer"), 3 * THREADS * MESSAGES);
}

TEST_F(Reentrancy, AnAppenderThatRemovesItselfIsNotCalledAgain) {
    int calls = 0;
    CallingAppender once([&](const LogMessage&) {
        ++calls;
        root_.removeAppender(&once);
    });
    root_.addAppender(&once);
    root_.addAppender(&once);
    LoggerFactory::getLogger("net").error("message", 0, "");
    LoggerFactory::getLogger("db").error("message", 0, "");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(count("message"), 2);
}

/// One thread holds the command bus inside a listener. Another holds a logger and waits for the bus, and a
/// third holds a lock that the listener needs.
TEST_F(Reentrancy, ALockedBusKeepsNobodyFromSettingsOrFromDestroyingAFreeListener) {
    Logger& logger = LoggerFactory::getLogger("net");
    std::promise<void> listening;
    std::promise<void> writing;
    CallingAppender failing([&](const LogMessage&) {
        writing.set_value();
        throw LogException("out of order");
    });
    logger.addAppender(&failing);
    std::mutex mutex;
    CallingListener listener([&](const std::string&) {
        listening.set_value();
        writing.get_future().wait();
        logger.setExpirationTime(logger.getExpirationTime()); // a hang here is a failure
        const std::lock_guard<std::mutex> lock(mutex);
    });
    LogManager::registerCommandListener("X", &listener);
    std::thread issuer;
    std::thread writer;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        issuer = std::thread([] { LogManager::command("X", ""); });
        listening.get_future().wait();
        const CallingListener neverRegistered([](const std::string&) {});
        writer = std::thread([&logger] { logger.error("message", 0, ""); });
    } // and here
    issuer.join();
    writer.join();
    logger.removeAppender(&failing);
}

TEST_F(Reentrancy, WhateverAnAppenderThrowsIsReportedAndTheOthersGoOn) {
    TestSupport::RecordingListener listener;
    CallingAppender last([](const LogMessage&) { throw LogException("also out of order"); });
    LogManager::registerCommandListener("EXCEPTION", &listener);
    root_.addAppender(&failing_);
    root_.addAppender(&last);
    for (const char* text : {"int", "runtime_error", "LogException"}) {
        EXPECT_NO_THROW(root_.error(text, 0, ""));
        EXPECT_EQ(count(text), 1);
    }
    root_.removeAppender(&failing_);
    root_.removeAppender(&last);
    const auto report = [](const std::string& begin, const std::string& text) {
        return AllOf(StartsWith(begin + "\nMsg = 20"), EndsWith(" root ERROR " + text));
    };
    const std::string unknown = "Unknown exception from doOutput(msg).";
    const std::string known = "LogException from doOutput(msg).\nException = ";
    EXPECT_THAT(listener.arguments,
                ElementsAre(report(unknown, "int"), report(known + "also out of order", "int"),
                            report(unknown, "runtime_error"),
                            report(known + "also out of order", "runtime_error"),
                            report(known + "out of order", "LogException"),
                            report(known + "also out of order", "LogException")));
}

TEST_F(Reentrancy, WhateverAListenerThrowsReachesTheCallerAndLeavesNoLockBehind) {
    LogManager::registerCommandListener("EXCEPTION", &throwing_);
    LogManager::registerCommandListener("DynamicLogLevelFilterSoft", &throwing_);
    root_.addAppender(&failing_);
    EXPECT_THROW(root_.error("message", 0, ""), std::string);
    EXPECT_THROW(root_.setLevel(Level::DEBUG, true), std::string);
    EXPECT_EQ(root_.getLevel(), Level::WARNING);
    // Another thread can proceed: the logger and the command bus are free.
    inThreads(1, [this](int) { EXPECT_THROW(root_.error("message", 0, ""), std::string); });
    root_.removeAppender(&failing_);
    EXPECT_EQ(count("message"), 2);
}

TEST_F(Reentrancy, AListenerThatThrowsDoesNotEndTheConsumerThread) {
    ASSERT_TRUE(init("appender.broken = SimpleFileAppender\n"
                     "appender.broken.asynchronous = true\n"
                     "appender.broken.dir = DIR/missing\n"
                     "appender.working = SimpleFileAppender\n"
                     "appender.working.asynchronous = true\n"
                     "appender.working.dir = DIR\n"
                     "zav.log.AsynchronousDispatcher.waitingPeriod = 0\n"));
    LogManager::registerCommandListener("EXCEPTION", &throwing_);
    TestSupport::StandardErrorCapture errors;
    for (std::size_t messages = 1; messages <= 2; ++messages) {
        root_.error("message", 0, "");
        while (lastWordsOf("working").size() < messages) { // a hang here is the failure
            std::this_thread::yield();
        }
    }
    LogManager::finish(); // the consumer may still be calling the listener
    EXPECT_THAT(TestSupport::linesIn(errors.text(), 0),
                AllOf(SizeIs(2), Each(StartsWith("IceUtil::Thread::run(): uncaught exception: "))));
}

/// The listener and the appender modify the very strings that the message was logged with.
TEST_F(Reentrancy, EveryAppenderGetsAMessageAsItWasLogged) {
    ASSERT_TRUE(init("appender.queued = SimpleFileAppender\n"
                     "appender.queued.asynchronous = true\n"
                     "appender.queued.dir = DIR\n"));
    std::string text = "a text that is too long for a string to hold in itself";
    std::string file = "a-file-whose-name-is-too-long-for-a-string-to-hold-in-itself.cpp";
    CallingAppender changing([&](const LogMessage&) {
        text = std::string(text.size(), 'x');
        file = std::string(1000, 'y');
    });
    Logger& logger = LoggerFactory::getLogger("net");
    logger.addAppender(&changing);
    logger.error(text, 7, file);
    logger.removeAppender(&changing);
    EXPECT_TRUE(LogManager::flush());
    EXPECT_THAT(TestSupport::readFile(directory_ / "queued"),
                AllOf(HasSubstr("-hold-in-itself.cpp:7"), HasSubstr(" ERROR a text that is too long"),
                      Not(HasSubstr("xxx"))));
}
