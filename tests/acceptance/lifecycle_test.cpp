#include "AcceptanceSupport.h"

#include "log/LogException.h"

#include <atomic>

using namespace ZAV;
using namespace ZAV::Log;
using namespace testing;

namespace {

class LifeCycle : public TestSupport::Application {};

const std::string ONE_FILE = "appender.x = SimpleFileAppender\n"
                             "appender.x.asynchronous = true\n"
                             "appender.x.dir = DIR\n";

} // namespace

TEST_F(LifeCycle, ThreadsLogOnThroughAThousandRounds) {
    std::atomic<bool> ended{false};
    std::thread background([&ended] {
        while (!ended) {
            LoggerFactory::getLogger("background").error("any", 0, "");
            std::this_thread::yield();
        }
    });
    std::vector<std::string> expected;
    for (int round = 0; round < 1000; ++round) {
        expected.push_back(std::to_string(round));
        EXPECT_TRUE(init(ONE_FILE + "appender.x.filters = round\n"
                                    "appender.console = StdoutAppender\n"
                                    "appender.console.filters = none\n"
                                    "zav.log.AsynchronousDispatcher.maxQueueSize = -1\n"));
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

TEST_F(LifeCycle, FinishIsWelcomeInAnyStateAndASecondInitChangesNothing) {
    Logger& net = LoggerFactory::getLogger("net");
    LogManager::finish();
    net.error("unseen", 0, "");
    EXPECT_TRUE(init(ONE_FILE));
    LogManager::finish();
    LogManager::finish();
    EXPECT_TRUE(init(ONE_FILE + "logger.net.level = DEBUG\n"));
    EXPECT_FALSE(init("logger.net.level = ERROR\nappender.y = SimpleFileAppender\nappender.y.dir = DIR\n"));
    net.debug("seen", 0, "");
    LogManager::finish();
    EXPECT_THAT(lastWordsOf("x"), ElementsAre("seen"));
    EXPECT_FALSE(TestSupport::fileExists(directory_ / "y"));
    EXPECT_EQ(net.getLevel(), Level::DEBUG);
}
