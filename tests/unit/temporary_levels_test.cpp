#include "TestClock.h"
#include "TestSupport.h"

#include "log/filters/TemporaryLevels.h"

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using namespace testing;
using TestSupport::readFile;
using TestSupport::setClock;

namespace {

/// Synchronous appenders from a configuration, each with its own file.
class LevelForAWhile : public Test {
protected:
    LevelForAWhile() {
        declare("fixed", "level", "INFO");
        declare("dynamic", "level", "WARNING");
        properties_["appender.dynamic.expiration"] = "1 min";
        declare("all", "asynchronous", "false");
    }
    ~LevelForAWhile() override { LogManager::finish(); }

    void declare(const std::string& name, const std::string& setting, const std::string& value) {
        properties_["appender." + name] = "SimpleFileAppender";
        properties_["appender." + name + ".dir"] = directory_.path();
        properties_["appender." + name + "." + setting] = value;
    }

    /// The texts that an appender has written.
    std::string written(const std::string& appender) const {
        std::istringstream lines(readFile(directory_ / appender));
        std::string texts;
        for (std::string line; std::getline(lines, line);) {
            texts += line.substr(line.rfind(' ') + 1) + " ";
        }
        return texts;
    }

    static void pass(Time duration) { setClock(Time::now() + duration); }

    /// The level of each appender, followed by the seconds until it expires if it is temporary; "-" without a
    /// level.
    static std::vector<std::string> states() {
        std::vector<std::string> texts;
        for (const AppenderStatus& status : LogManager::appenders()) {
            const std::uint64_t left =
                status.until == Time() ? 0 : status.until.microseconds() - Time::now().microseconds();
            texts.push_back(!status.hasLevel ? "-"
                            : left == 0      ? Level::toString(status.level)
                                        : Level::toString(status.level) + std::to_string(left / 1000000));
        }
        return texts;
    }

    const TestSupport::TemporaryDirectory directory_;
    Util::Properties properties_;
    Logger& root_ = LoggerFactory::getRootLogger();
    Logger& net_ = LoggerFactory::getLogger("net");
    Logger& tcp_ = LoggerFactory::getLogger("net.tcp");
};

} // namespace

TEST_F(LevelForAWhile, IsLetThroughByTheSubtreeAndAllAppendersUntilItsEnd) {
    LogManager::init(properties_);
    EXPECT_THAT(states(), ElementsAre("-", "WARNING", "INFO"));
    tcp_.setLevel(Level::ERROR, false);
    LogManager::setLevelFor(net_, Level::DEBUG, Time(10, SEC));
    EXPECT_THAT(states(), ElementsAre("-", "DEBUG10", "DEBUG10"));
    Logger& made = LoggerFactory::getLogger("net.made");
    EXPECT_EQ(net_.getLevel(), Level::DEBUG);
    EXPECT_EQ(root_.getLevel(), Level::WARNING);
    net_.trace("below", 0, "");
    root_.info("elsewhere", 0, "");
    pass(Time(10, SEC));
    tcp_.debug("tcp", 0, "");
    made.debug("made", 0, "");
    EXPECT_TRUE(net_.isLoggable(Level::DEBUG));
    pass(Time(1, MSEC)); // with nothing logged in between
    EXPECT_FALSE(net_.isLoggable(Level::DEBUG));
    EXPECT_EQ(net_.getLevel(), Level::WARNING);
    EXPECT_EQ(tcp_.getLevel(), Level::ERROR);
    EXPECT_EQ(LoggerFactory::getLogger("net.later").getLevel(), Level::WARNING);
    EXPECT_THAT(states(), ElementsAre("-", "WARNING", "INFO"));
    made.debug("late", 0, ""); // the first to notice
    EXPECT_EQ(made.getLevel(), Level::WARNING);
    for (const char* const appender : {"fixed", "dynamic", "all"}) {
        EXPECT_EQ(written(appender), "tcp made ") << appender;
    }
    root_.setLevel(Level::TRACE, false);
    root_.debug("late", 0, "");
    EXPECT_EQ(written("fixed"), "tcp made ");
}

TEST_F(LevelForAWhile, AddsUpWithThoseOfOtherLoggersAndIsReplacedByTheNextOfItsOwn) {
    LogManager::init(properties_);
    LogManager::setLevelFor("net", Level::INFO, Time(10, SEC));
    LogManager::setLevelFor("net.tcp", Level::TRACE, Time(2, SEC));
    LogManager::setLevelFor("root", Level::ERROR, Time(5, SEC)); // lets no further messages through
    EXPECT_EQ(root_.getLevel(), Level::WARNING);
    EXPECT_EQ(tcp_.getLevel(), Level::TRACE);
    EXPECT_THAT(states(), ElementsAre("-", "TRACE2", "TRACE2"));
    pass(Time(3, SEC));
    EXPECT_EQ(tcp_.getLevel(), Level::INFO);
    EXPECT_THAT(states(), ElementsAre("-", "INFO7", "INFO"));
    LogManager::setLevelFor("net", Level::DEBUG, Time(1, SEC));
    EXPECT_EQ(tcp_.getLevel(), Level::DEBUG);
    pass(Time(2, SEC));
    EXPECT_EQ(tcp_.getLevel(), Level::WARNING);

    LogManager::setLevelFor("net", Level::DEBUG, Time(1, HOUR));
    LogManager::setLevelFor("net", Level::DEBUG, Time());
    EXPECT_EQ(tcp_.getLevel(), Level::WARNING);
    EXPECT_THAT(states(), ElementsAre("-", "WARNING", "INFO"));
    LogManager::setLevelFor("net", Level::TRACE, Time(~std::uint64_t{0}, USEC));
    EXPECT_EQ(tcp_.getLevel(), Level::TRACE);
}

TEST_F(LevelForAWhile, EndsWhereTheLevelIsSetAndOutlastsAnExpiration) {
    LogManager::init(properties_);
    net_.setLevel(Level::INFO, false);
    net_.setExpirationTime(Time(1, MIN));
    LogManager::setLevelFor(net_, Level::DEBUG, Time(10, MIN));
    tcp_.setLevel(Level::ERROR, false);
    EXPECT_EQ(tcp_.getLevel(), Level::ERROR);
    EXPECT_EQ(net_.getLevel(), Level::DEBUG);
    pass(Time(2, MIN)); // the expiration is over
    net_.debug("expired", 0, "");
    EXPECT_EQ(net_.getLevel(), Level::DEBUG);
    EXPECT_EQ(written("fixed"), "expired ");
    pass(Time(9, MIN));
    EXPECT_EQ(net_.getLevel(), Level::WARNING);

    LogManager::setLevelFor(net_, Level::DEBUG, Time(10, MIN));
    root_.setLevel(Level::INFO, false);
    EXPECT_EQ(net_.getLevel(), Level::INFO);
    EXPECT_THAT(states(), ElementsAre("-", "WARNING", "INFO"));
}

TEST_F(LevelForAWhile, JudgesAQueuedMessageByTheTimeWhenItWasLogged) {
    declare("queued", "level", "INFO");
    properties_["appender.queued.asynchronous"] = "true";
    properties_["zav.log.AsynchronousDispatcher.waitingPeriod"] = "3600";
    LogManager::init(properties_);
    net_.setLevel(Level::DEBUG, false);
    net_.debug("before", 0, "");
    pass(Time(1, SEC));
    LogManager::setLevelFor(root_, Level::DEBUG, Time(2, SEC));
    net_.debug("first", 0, "");
    pass(Time(1, SEC));
    LogManager::setLevelFor(root_, Level::INFO, Time(1, MIN));
    pass(Time(1, MSEC));
    net_.debug("between", 0, "");
    pass(Time(1, MSEC));
    LogManager::setLevelFor(root_, Level::DEBUG, Time(2, SEC));
    net_.debug("second", 0, "");
    pass(Time(1, HOUR));
    net_.debug("after", 0, "");
    LogManager::flush();
    EXPECT_EQ(written("queued"), "first second ");
}

TEST_F(LevelForAWhile, WorksOnAfterTheClockWasSetBackAndThroughFinishAndInit) {
    LogManager::init(properties_);
    LogManager::setLevelFor(net_, Level::DEBUG, Time(10, SEC));
    setClock(Time(Time::now().microseconds() - 3600000000U, USEC));
    net_.debug("back", 0, "");
    EXPECT_EQ(written("fixed"), "back ");
    LogManager::finish();
    LogManager::init(properties_);
    EXPECT_THAT(states(), ElementsAre("-", "DEBUG3610", "DEBUG3610"));
    properties_["logger.root.level"] = "ERROR";
    LogManager::finish();
    LogManager::init(properties_);
    EXPECT_EQ(net_.getLevel(), Level::ERROR);
    EXPECT_THAT(states(), ElementsAre("-", "WARNING", "INFO"));
}

TEST(TemporaryLevels, KeepTheLastFewWhoseTimeIsOver) {
    TemporaryLevels& levels = TemporaryLevels::instance();
    const Logger* const logger = &LoggerFactory::getRootLogger();
    for (std::uint64_t i = 1; i <= 100; ++i) {
        levels.set(logger, Level::DEBUG, Time(i, SEC), Time(i, SEC) + Time(1, MSEC));
    }
    EXPECT_FALSE(levels.letsThrough(Level::DEBUG, Time(50, SEC)));
    EXPECT_TRUE(levels.letsThrough(Level::DEBUG, Time(90, SEC)));
    EXPECT_FALSE(levels.letsThrough(Level::TRACE, Time(90, SEC)));
    EXPECT_FALSE(levels.letsThrough(Level::DEBUG, Time(90, SEC) + Time(2, MSEC)));
}
