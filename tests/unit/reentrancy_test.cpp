#include "TestSupport.h"

#include "log/LogException.h"

#include <future>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using namespace testing;
using TestSupport::CallingAppender;
using TestSupport::CallingListener;

TEST(Reentrancy, AListenerNeverWaitsForALoggerThatIsWriting) {
    Logger& logger = LoggerFactory::getLogger("busy");
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
    std::promise<void> heard;
    CallingListener listener([&](const std::string&) {
        logger.error("from the listener", 0, "");
        heard.set_value();
    });
    LogManager::registerCommandListener("X", &listener);

    std::thread writer([&] { logger.error("held", 0, ""); });
    entered.get_future().wait();
    std::thread issuer([] { LogManager::command("X", ""); });
    heard.get_future().wait(); // a hang here is the failure
    EXPECT_THAT(texts, ElementsAre("held"));
    released.set_value();
    writer.join();
    issuer.join();
    EXPECT_THAT(texts, ElementsAre("held", "from the listener"));
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
    EXPECT_EQ(reports, 1022); // 2 + 4 + 8 and so on: each report brings two more, eight deep
    logger.error("message", 0, "");
    EXPECT_EQ(reports, 2 * 1022);
    LogManager::finish();
}
