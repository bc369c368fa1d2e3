#include "TestClock.h"
#include "TestSupport.h"

#include "log/ConfigurationMessage.h"
#include "log/LogCapture.h"
#include "log/LogLine.h"
#include "log/LogMacros.h"
#include "log/LoggerFactory.h"

#include <atomic>
#include <future>
#include <optional>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using namespace testing;
using TestSupport::RecordingAppender;
using TestSupport::setClock;
using TestSupport::textsOf;

namespace {

class Capture : public Test {
protected:
    ~Capture() override { LogManager::finish(); }

    Logger& root_ = LoggerFactory::getRootLogger();
    Logger& net_ = LoggerFactory::getLogger("net");
    Logger& tcp_ = LoggerFactory::getLogger("net.tcp");
};

} // namespace

TEST_F(Capture, RecordsALoggerAndAllBelowItAtItsLevel) {
    LogCapture capture(net_, Level::DEBUG);
    ZAV_LOG_DEBUG(tcp_, "port " << 8080);
    LoggerFactory::getLogger("net.made.meanwhile").info("made", 12, "app.cpp");
    root_.error("elsewhere");
    ZAV_LOG_TRACE(net_, "too fine");
    net_.config(ConfigurationMessage("reloaded"));
    EXPECT_THAT(textsOf(capture), ElementsAre("port 8080", "made", "reloaded"));
    EXPECT_THAT(capture.lines(),
                ElementsAre(formatLogLine(capture.messages()[0]),
                            Time::now().toString() + " net.made.meanwhile app.cpp:12 INFO made",
                            Time::now().toString() + " net reloaded"));
    EXPECT_TRUE(capture.contains("t 80"));
    EXPECT_FALSE(capture.contains("elsewhere"));
    EXPECT_EQ(capture.count(Level::DEBUG), 1U);
    EXPECT_EQ(capture.count(Level::ERROR), 0U);
    const std::vector<LogMessage> kept = capture.messages();
    capture.clear();
    EXPECT_FALSE(capture.contains(""));
    tcp_.setLevel(Level::TRACE, false);
    tcp_.trace("passes anyway");
    EXPECT_THAT(capture.lines(), ElementsAre(Time::now().toString() + " net.tcp TRACE passes anyway"));
    EXPECT_EQ(kept[1].getText(), "made");
}

TEST_F(Capture, OfTheRootIsWhatOneGetsWithoutArguments) {
    const LogCapture capture;
    ZAV_LOG_TRACE(tcp_, "finest");
    EXPECT_EQ(capture.count(Level::TRACE), 1U);
}

TEST_F(Capture, LeavesTheLevelsThatWereSetApartAndThoseThatAreSetMeanwhile) {
    net_.setLevel(Level::INFO, false);
    tcp_.setLevel(Level::ERROR, false);
    Logger& udp = LoggerFactory::getLogger("net.udp");
    Logger& fine = LoggerFactory::getLogger("net.fine");
    fine.setLevel(Level::TRACE, false);
    {
        const LogCapture capture(net_, Level::DEBUG);
        EXPECT_EQ(root_.getLevel(), Level::WARNING);
        EXPECT_EQ(net_.getLevel(), Level::DEBUG);
        EXPECT_EQ(fine.getLevel(), Level::TRACE);
        udp.setLevel(Level::AUDIT, true); // as the command does
        EXPECT_TRUE(udp.isLoggable(Level::DEBUG));
        udp.debug("held back by no level");
        LoggerFactory::getLogger("net.udp.made").debug("nor here");
        EXPECT_THAT(textsOf(capture), SizeIs(2));
    }
    EXPECT_EQ(net_.getLevel(), Level::INFO);
    EXPECT_EQ(tcp_.getLevel(), Level::ERROR);
    EXPECT_EQ(fine.getLevel(), Level::TRACE);
    EXPECT_EQ(udp.getLevel(), Level::AUDIT);
    EXPECT_EQ(LoggerFactory::getLogger("net.udp.made").getLevel(), Level::AUDIT);
}

TEST_F(Capture, LetsExpirationsRunAndLevelsForAWhileEnd) {
    const Time start = Time::now();
    net_.setExpirationTime(Time(10, MIN));
    net_.setLevel(Level::INFO, false);
    tcp_.setExpirationTime(Time(1, MIN));
    LogManager::setLevelFor(net_, Level::DEBUG, Time(5, MIN));
    {
        const LogCapture capture(root_);
        setClock(start + Time(2, MIN));
        tcp_.trace("its level has expired, its level for a while has not");
        LogManager::setLevelFor(net_, Level::TRACE, Time(2, MIN));
        setClock(start + Time(4, MIN) + Time(1, MSEC));
        net_.trace("now it has");
        EXPECT_EQ(net_.getLevel(), Level::TRACE);
        EXPECT_THAT(textsOf(capture), SizeIs(2));
    }
    EXPECT_EQ(net_.getExpirationTime(), Time(10, MIN));
    EXPECT_EQ(net_.getLevel(), Level::INFO);
    EXPECT_EQ(tcp_.getLevel(), Level::WARNING);
    const LogCapture after(root_, Level::AUDIT);
    setClock(start + Time(10, MIN));
    net_.info("in time");
    setClock(start + Time(10, MIN) + Time(1, MSEC));
    net_.info("too late");
    EXPECT_THAT(textsOf(after), ElementsAre("in time"));
}

TEST_F(Capture, LeavesTheOtherAppendersTheirLevelsAndWithoutThemNothing) {
    const TestSupport::TemporaryDirectory directory;
    Util::Properties properties{{"zav.log.AsynchronousDispatcher.waitingPeriod", "3600"},
                                {"appender.later.asynchronous", "true"},
                                {"appender.levelled.level", "WARNING"},
                                {"appender.levelled.expiration", "1 min"}};
    for (const std::string appender : {"all", "later", "levelled"}) {
        properties["appender." + appender] = "SimpleFileAppender";
        properties["appender." + appender + ".dir"] = directory.path();
    }
    const auto written = [&directory](const std::string& appender) {
        LogManager::flush();
        return TestSupport::lastWordsIn(TestSupport::readFile(directory / appender));
    };
    LogManager::init(properties);
    {
        const LogCapture capture(net_);
        net_.debug("passed-on");
    }
    net_.error("queued-before");
    RecordingAppender added("added");
    {
        const LogCapture capture(net_, Level::TRACE, false);
        tcp_.error("unseen");
        net_.addAppender(&added);
        LoggerFactory::getLogger("net.made").error("unseen");
        root_.error("elsewhere");
        EXPECT_THAT(written("later"), ElementsAre("passed-on", "queued-before", "elsewhere"));
        EXPECT_THAT(textsOf(capture), ElementsAre("unseen", "unseen"));
        EXPECT_EQ(LogManager::appenders()[2].level, Level::WARNING);
    }
    tcp_.error("afterwards");
    net_.removeAppender(&added);
    EXPECT_THAT(added.texts, ElementsAre("afterwards"));
    EXPECT_THAT(written("later"), ElementsAre("passed-on", "queued-before", "elsewhere", "afterwards"));
    EXPECT_THAT(written("all"), ElementsAre("passed-on", "queued-before", "elsewhere", "afterwards"));
    EXPECT_THAT(written("levelled"), ElementsAre("queued-before", "elsewhere", "afterwards"));
}

TEST_F(Capture, OverlapsWithOthersInAnyOrder) {
    RecordingAppender appender("other");
    root_.addAppender(&appender);
    std::optional<LogCapture> outer(std::in_place, root_, Level::INFO);
    std::optional<LogCapture> muting(std::in_place, net_, Level::DEBUG, false);
    std::optional<LogCapture> inner(std::in_place, tcp_, Level::TRACE, false);
    tcp_.trace("1");
    net_.debug("2");
    EXPECT_EQ(root_.getLevel(), Level::INFO);
    muting.reset();
    EXPECT_EQ(net_.getLevel(), Level::INFO);
    EXPECT_EQ(tcp_.getLevel(), Level::TRACE);
    tcp_.trace("3");
    net_.info("4");
    EXPECT_THAT(textsOf(*outer), ElementsAre("1", "2", "3", "4"));
    EXPECT_THAT(textsOf(*inner), ElementsAre("1", "3"));
    outer.reset();
    EXPECT_EQ(net_.getLevel(), Level::WARNING);
    inner.reset();
    EXPECT_EQ(tcp_.getLevel(), Level::WARNING);
    tcp_.error("5");
    root_.removeAppender(&appender);
    EXPECT_THAT(appender.texts, ElementsAre("4", "5"));
}

TEST_F(Capture, WaitsForTheAppendersThatItLeavesOut) {
    std::promise<void> isEntered;
    std::atomic<bool> hasLeft{false};
    TestSupport::CallingAppender appender([&](const LogMessage&) {
        isEntered.set_value();
        while (net_.getLevel() != Level::TRACE) { // until the capture is active
            std::this_thread::yield();
        }
        for (int i = 0; i < 1000; ++i) {
            std::this_thread::yield();
        }
        hasLeft = true;
    });
    net_.addAppender(&appender);
    std::thread logging([this] { net_.error("before"); });
    isEntered.get_future().wait();
    const LogCapture capture(net_, Level::TRACE, false);
    EXPECT_TRUE(hasLeft);
    net_.removeAppender(&appender);
    logging.join();
}

TEST_F(Capture, RecordsWhatManyThreadsLogWhileOthersComeAndGo) {
    constexpr int THREADS = 3;
    constexpr int MESSAGES = 2000;
    const LogCapture capture(root_);
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([i] {
            Logger& logger = LoggerFactory::getLogger("net.thread" + std::to_string(i % 2));
            for (int j = 0; j < MESSAGES; ++j) {
                ZAV_LOG_TRACE(logger, j);
            }
        });
    }
    for (std::size_t recorded = 0; recorded < THREADS * MESSAGES; recorded = capture.count(Level::TRACE)) {
        const LogCapture other(net_, Level::DEBUG, recorded % 2 == 0);
        EXPECT_LE(other.messages().size(), THREADS * MESSAGES);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(capture.messages(), SizeIs(THREADS * MESSAGES));
}
