#include "TestSupport.h"

#include "log/LogException.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"

#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <memory>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using testing::ElementsAre;
using TestSupport::RecordingAppender;
using TestSupport::RecordingListener;

namespace {

class CallingListener : public CommandListener {
public:
    explicit CallingListener(std::function<void()> call) : call_(std::move(call)) {}
    void onCommand(const std::string&) override { call_(); }

private:
    std::function<void()> call_;
};

/// An appender that stays in its first write until the test lets it go on.
class HeldAppender : public RecordingAppender {
public:
    using RecordingAppender::RecordingAppender;
    std::promise<void> entered;
    std::promise<void> released;

protected:
    void doOutput(const LogMessage& message) override {
        RecordingAppender::doOutput(message);
        if (texts.size() == 1) {
            entered.set_value();
            released.get_future().wait();
        }
    }
};

class FailingAppender : public Appender {
public:
    using Appender::Appender;

protected:
    void doOutput(const LogMessage&) override { throw LogException("cannot be written"); }
};

} // namespace

TEST(CommandBus, AListenerMayBeUnregisteredOrDestroyedWhileItIsCalled) {
    RecordingListener behind;
    CallingListener unregistering([] { LogManager::unregisterCommandListener("X"); });
    LogManager::registerCommandListener("X", &unregistering);
    LogManager::registerCommandListener("X", &behind);
    LogManager::command("X", "a");
    LogManager::command("X", "b");
    EXPECT_TRUE(behind.arguments.empty());

    auto destroyed = std::make_unique<RecordingListener>();
    CallingListener destroying([&destroyed] { destroyed.reset(); });
    LogManager::registerCommandListener("Y", &destroying);
    LogManager::registerCommandListener("Y", destroyed.get());
    LogManager::registerCommandListener("Y", &behind);
    LogManager::command("Y", "c");
    LogManager::command("Y", "d");
    EXPECT_THAT(behind.arguments, ElementsAre("c", "d"));
}

TEST(CommandBus, AListenerNeverWaitsForALoggerThatIsWriting) {
    Logger& logger = LoggerFactory::getLogger("busy");
    HeldAppender appender("held");
    logger.addAppender(&appender);
    std::promise<void> heard;
    CallingListener listener([&] {
        LoggerFactory::getLogger("busy").error("from the listener", 0, "");
        heard.set_value();
    });
    LogManager::registerCommandListener("X", &listener);

    std::thread writer([&] { logger.error("held", 0, ""); });
    appender.entered.get_future().wait();
    std::thread issuer([] { LogManager::command("X", ""); });
    heard.get_future().wait(); // a hang here is the failure
    EXPECT_THAT(appender.texts, ElementsAre("held"));
    appender.released.set_value();
    writer.join();
    issuer.join();
    EXPECT_THAT(appender.texts, ElementsAre("held", "from the listener"));
    LogManager::finish();
}

TEST(CommandBus, ListenersThatLogToEachOthersLoggersNeverWaitForEachOther) {
    Logger& a = LoggerFactory::getLogger("a");
    Logger& b = LoggerFactory::getLogger("b");
    FailingAppender failing("failing");
    a.addAppender(&failing);
    b.addAppender(&failing);
    CallingListener listener([&] {
        a.error("report", 0, "");
        b.error("report", 0, "");
    });
    LogManager::registerCommandListener("EXCEPTION", &listener);
    const auto logOften = [](Logger& logger) {
        for (int i = 0; i < 20; ++i) {
            logger.error("text", 0, "");
        }
    };
    std::thread first([&] { logOften(a); });
    std::thread second([&] { logOften(b); });
    first.join(); // a hang here is the failure
    second.join();
    LogManager::finish();
}

TEST(FailureReport, IsMadeOfEveryFailureUntilALoopHasToEnd) {
    Logger& logger = LoggerFactory::getLogger("failing");
    FailingAppender first("first");
    FailingAppender second("second");
    logger.addAppender(&first);
    logger.addAppender(&second);
    int reports = 0;
    CallingListener listener([&] {
        ++reports;
        logger.error("in answer", 0, "");
    });
    LogManager::registerCommandListener("EXCEPTION", &listener);
    logger.error("message", 0, "");
    EXPECT_EQ(reports, 1022); // 2 + 4 + 8 and so on: each report doubles, eight deep
    logger.error("message", 0, "");
    EXPECT_EQ(reports, 2 * 1022);
    LogManager::finish();
}
