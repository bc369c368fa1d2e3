#include "CountingAllocator.h"
#include "CountingClock.h"
#include "TestSupport.h"

#include "log/LogLine.h"
#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <gmock/gmock.h>

using namespace ZAV;
using namespace ZAV::Log;
using TestSupport::allocationsOfThisThread;
using TestSupport::clockReadingsOfThisThread;

namespace {

template <typename Call>
std::size_t allocationsOf(Call call) {
    const std::size_t before = allocationsOfThisThread();
    call();
    return allocationsOfThisThread() - before;
}

class NullAppender : public Appender {
public:
    NullAppender() : Appender("null") {}

protected:
    void doOutput(const LogMessage&) override {}
};

/// Texts that a string holds in itself, and one that it has to allocate for.
const std::string SHORT = "short";
const std::string LONG(100, 'x');

class LoggingCost : public testing::Test {
protected:
    LoggingCost() { logger_.setLevel(Level::INFO, false); }
    ~LoggingCost() override { LogManager::finish(); }

    Logger& logger_ = LoggerFactory::getLogger("counted");
    TestSupport::TemporaryDirectory directory_;
};

} // namespace

TEST_F(LoggingCost, NoAllocationForARejectedCall) {
    EXPECT_EQ(allocationsOf([this] { logger_.debug(LONG, 1, LONG); }), 0U);
    EXPECT_EQ(allocationsOf([this] { ZAV_LOG_DEBUG(logger_, LONG << std::string(1000, 'y')); }), 0U);
}

TEST_F(LoggingCost, NoAllocationForAMessageBesideItsStrings) {
    NullAppender appender;
    logger_.addAppender(&appender);
    logger_.info(SHORT, 1, SHORT); // the first one copies the list of appenders
    EXPECT_EQ(allocationsOf([this] { logger_.info(SHORT, 1, SHORT); }), 0U);
    EXPECT_EQ(allocationsOf([this] { logger_.info(LONG, 1, SHORT); }), 1U);
    EXPECT_EQ(allocationsOf([this] { logger_.info(LONG, 1, LONG); }), 2U);
    logger_.removeAppender(&appender);
}

TEST_F(LoggingCost, OneClockReadingForAnAcceptedMessage) {
    NullAppender appender;
    logger_.addAppender(&appender);
    const std::size_t before = clockReadingsOfThisThread();
    logger_.debug(LONG, 1, LONG);
    EXPECT_EQ(clockReadingsOfThisThread(), before);
    logger_.info(LONG, 1, LONG);
    EXPECT_EQ(clockReadingsOfThisThread(), before + 1);
    logger_.removeAppender(&appender);
}

TEST_F(LoggingCost, OneAllocationForALine) {
    const LogMessage message("counted", Util::TimeUtils::Time::now(), Level::WARNING, LONG, 2147483647, LONG,
                             LOG);
    Level::toString(Level::WARNING); // the first use makes the names of all levels
    EXPECT_EQ(allocationsOf([&message] { formatLogLine(message); }), 1U);
}

TEST_F(LoggingCost, NoAllocationForALineInAnOpenFile) {
    Util::Properties properties;
    properties["appender.file"] = "FileAppender";
    properties["appender.file.dir"] = directory_.path();
    LogManager::init(properties);
    logger_.info(LONG, 1, SHORT);
    logger_.info(SHORT, 1, SHORT); // the first one copies the list of appenders
    EXPECT_EQ(allocationsOf([this] { logger_.info(SHORT, 1, SHORT); }), 0U);
}

TEST_F(LoggingCost, NoAllocationOfItsOwnForAQueuedMessage) {
    Util::Properties properties;
    properties["appender.file"] = "FileAppender";
    properties["appender.file.asynchronous"] = "true";
    properties["appender.file.dir"] = directory_.path();
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = "3600";
    LogManager::init(properties);
    constexpr std::size_t MESSAGES = 10000;
    const std::size_t allocations = allocationsOf([this] {
        for (std::size_t i = 0; i < MESSAGES; ++i) {
            logger_.info(SHORT, 1, SHORT);
        }
    });
    // The queue takes a block for every few hundred messages.
    EXPECT_LE(allocations, MESSAGES / 100);
}
