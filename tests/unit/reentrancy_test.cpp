#include "TestClock.h"
#include "TestSupport.h"

#include "log/LogException.h"
#include "log/reentrancy/LibraryCall.h"

#include <future>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using namespace testing;
using TestSupport::CallingAppender;
using TestSupport::CallingListener;

/// The listener's messages are filtered and timestamped when it logs them. The second one stays behind the
/// first, although the logger is free by then.
TEST(Reentrancy, AListenerNeverWaitsForALoggerThatIsWriting) {
    Logger& logger = LoggerFactory::getLogger("busy");
    std::vector<std::string> texts;
    std::promise<void> entered;
    std::promise<void> released;
    CallingAppender holding([&](const LogMessage& message) {
        texts.push_back(message.getText() + " " + std::to_string(message.getTime().microseconds() / 1000));
        if (texts.size() == 1) {
            entered.set_value();
            released.get_future().wait();
        }
    });
    logger.addAppender(&holding);
    TestSupport::setClock(Time(1, MSEC));
    std::thread writer([&] { logger.error("held", 0, ""); });
    entered.get_future().wait();

    CallingListener listener([&](const std::string&) {
        logger.error("begin", 0, ""); // a hang here is the failure
        logger.setLevel(Level::AUDIT, false);
        logger.error("below the level", 0, "");
        released.set_value();
        writer.join();
        TestSupport::setClock(Time(2, MSEC));
        logger.audit("end", 0, "");
        logger.setLevel(Level::WARNING, false);
        TestSupport::setClock(Time(3, MSEC));
    });
    LogManager::registerCommandListener("X", &listener);
    LogManager::command("X", "");
    EXPECT_THAT(texts, ElementsAre("held 1", "begin 1", "end 2"));
    LogManager::finish();
}

TEST(Reentrancy, AListenerThatLogsTooMuchThroughABusyLoggerLosesTheOldestMessagesVisibly) {
    Logger& logger = LoggerFactory::getLogger("crowded");
    std::vector<std::string> texts;
    std::promise<void> entered;
    std::promise<void> released;
    CallingAppender holding([&](const LogMessage& message) {
        texts.push_back(message.getText());
        if (texts.size() == 1) {
            entered.set_value();
            released.get_future().wait();
        }
    });
    logger.addAppender(&holding);
    std::thread writer([&] { logger.error("held", 0, ""); });
    entered.get_future().wait();
    constexpr int MOST = DeferredMessages::MAX_OF_A_THREAD;
    CallingListener listener([&](const std::string&) {
        for (int number = 1; number <= MOST + 2; ++number) {
            logger.error(std::to_string(number), 0, "");
        }
        released.set_value();
        writer.join();
    });
    LogManager::registerCommandListener("X", &listener);
    const LogStatistics before = LogManager::statistics();
    TestSupport::StreamCapture errors(std::cerr);
    LogManager::command("X", "");
    const std::string reason = "Message queue size reached. Discarding oldest log message: ";
    EXPECT_THAT(errors.text(),
                MatchesRegex(reason + ".* crowded ERROR 1\n" + reason + ".* crowded ERROR 2\n"));
    EXPECT_EQ(texts.size(), 1U + MOST);
    EXPECT_EQ(texts[1] + " to " + texts.back(), "3 to " + std::to_string(MOST + 2));
    const LogStatistics after = LogManager::statistics();
    EXPECT_EQ(after.discarded - before.discarded, 2U);
    EXPECT_EQ(after.queued, after.delivered + after.discarded + after.waiting);
    logger.removeAppender(&holding);
    LogManager::finish();
}

TEST(Reentrancy, EveryFailureIsReportedUntilALoopHasToEnd) {
    Logger& logger = LoggerFactory::getLogger("failing");
    CallingAppender first([](const LogMessage&) { throw LogException("cannot be written"); });
    CallingAppender second([](const LogMessage&) { throw 1; });
    logger.addAppender(&first);
    logger.addAppender(&second);
    int reports = 0;
    CallingListener listener([&](const std::string&) {
        ++reports;
        logger.error("in answer", 0, "");
    });
    LogManager::registerCommandListener("EXCEPTION", &listener);
    logger.error("message", 0, "");
    EXPECT_EQ(reports, 1022); // 2 + 4 + 8 and so on: each report causes two more, up to eight levels deep
    logger.error("message", 0, "");
    EXPECT_EQ(reports, 2 * 1022);
    LogManager::finish();
}
