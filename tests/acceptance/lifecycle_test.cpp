#include "AcceptanceSupport.h"

#include "log/LogException.h"

#include <atomic>

using namespace ZAV;
using namespace ZAV::Log;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class LifeCycle : public TestSupport::Application {};

const std::string ONE_FILE = "appender.x = SimpleFileAppender\n"
                             "appender.x.asynchronous = true\n"
                             "appender.x.dir = DIR\n";

} // namespace

TEST_F(LifeCycle, ThreadsLogOnThroughAThousandRounds) {
    const int rounds = 1000;
    Util::Properties properties;
    properties["appender.x"] = "SimpleFileAppender";
    properties["appender.x.dir"] = directory_.path();
    properties["appender.x.asynchronous"] = "true";
    properties["appender.x.filters"] = "round";
    properties["appender.console"] = "StdoutAppender";
    properties["appender.console.filters"] = "none";
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    std::atomic<bool> ended{false};
    std::thread background([&ended] {
        while (!ended) {
            LoggerFactory::getLogger("background").error("any", 0, "");
            std::this_thread::yield();
        }
    });
    std::vector<std::string> expected;
    for (int round = 0; round < rounds; ++round) {
        expected.push_back(std::to_string(round));
        EXPECT_TRUE(LogManager::init(properties));
        LoggerFactory::getLogger("round").error(expected.back(), 0, "");
        LogManager::finish();
    }
    ended = true;
    background.join();
    EXPECT_EQ(lastWordsOf("x"), expected);
}

TEST_F(LifeCycle, AFailedInitLeavesNothingBehind) {
    TestSupport::RecordingListener listener;
    LogManager::registerCommandListener("X", &listener);
    EXPECT_THROW(init(ONE_FILE + "appender.y = FileAppender\nappender.y.level = none\n"), LogException);
    LogManager::command("X", "a");
    LoggerFactory::getRootLogger().error("unseen", 0, "");
    EXPECT_THAT(listener.arguments, IsEmpty());
    EXPECT_TRUE(init(ONE_FILE));
    LoggerFactory::getRootLogger().error("seen", 0, "");
    LogManager::finish();
    EXPECT_THAT(lastWordsOf("x"), ElementsAre("seen"));
}

TEST_F(LifeCycle, FinishIsWelcomeInAnyState) {
    LogManager::finish();
    LoggerFactory::getRootLogger().error("unseen", 0, "");
    EXPECT_TRUE(init(ONE_FILE));
    LogManager::finish();
    LogManager::finish();
    EXPECT_TRUE(init(ONE_FILE));
    LoggerFactory::getRootLogger().error("seen", 0, "");
    LogManager::finish();
    EXPECT_THAT(lastWordsOf("x"), ElementsAre("seen"));
}

TEST_F(LifeCycle, ASecondInitChangesNothing) {
    EXPECT_TRUE(init(ONE_FILE + "logger.net.level = DEBUG\n"));
    EXPECT_FALSE(init("logger.net.level = ERROR\nappender.y = SimpleFileAppender\nappender.y.dir = DIR\n"));
    EXPECT_EQ(LoggerFactory::getLogger("net").getLevel(), Level::DEBUG);
    LoggerFactory::getLogger("net").debug("seen", 0, "");
    LogManager::finish();
    EXPECT_THAT(lastWordsOf("x"), SizeIs(1));
    EXPECT_FALSE(TestSupport::fileExists(directory_ / "y"));
    EXPECT_EQ(LoggerFactory::getLogger("net").getLevel(), Level::DEBUG);
}
