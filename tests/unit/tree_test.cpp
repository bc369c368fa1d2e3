#include "TestClock.h"
#include "TestSupport.h"

#include "log/ConfigurationMessage.h"
#include "log/LogException.h"
#include "log/LogLine.h"

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using namespace testing;
using TestSupport::RecordingAppender;
using TestSupport::setClock;

TEST(LoggerFactory, MakesMissingLoggersOnTheWay) {
    EXPECT_THAT(LoggerFactory::getLoggerNames(), IsEmpty());
    EXPECT_FALSE(LoggerFactory::loggerExists("a.b"));
    EXPECT_EQ(LoggerFactory::getLogger("a.b.c").getName(), "a.b.c");
    LoggerFactory::getLogger("B");
    EXPECT_THAT(LoggerFactory::getLoggerNames(), ElementsAre("B", "a", "a.b", "a.b.c"));
    EXPECT_TRUE(LoggerFactory::loggerExists("a"));
    EXPECT_TRUE(LoggerFactory::loggerExists("a.b", "dir/c"));
    EXPECT_FALSE(LoggerFactory::loggerExists("a", "c"));
    EXPECT_EQ(&LoggerFactory::getLogger("a", "dir\\b"), &LoggerFactory::getLogger("src/a.b"));
    EXPECT_EQ(LoggerFactory::getLogger("net", "C:\\src\\Socket.cpp").getName(), "net.Socket.cpp");
    EXPECT_EQ(LoggerFactory::getRootLogger().getName(), "root");
    EXPECT_FALSE(LoggerFactory::loggerExists("root"));
}

TEST(LoggerFactory, SplitsAtTheFirstDotAndKeepsEmptyNames) {
    EXPECT_EQ(LoggerFactory::getLogger(".x").getName(), ".x");
    EXPECT_THAT(LoggerFactory::getLoggerNames(), ElementsAre("", ".x"));
    EXPECT_FALSE(LoggerFactory::loggerExists(".x")); // the lookup skips the leading dot
    LoggerFactory::getLogger("x");
    EXPECT_TRUE(LoggerFactory::loggerExists(".x"));
}

TEST(LoggerFactory, RefusesANameOfMoreThanAThousandComponents) {
    std::string deepest = "a";
    for (int i = 1; i < 1000; ++i) {
        deepest += i % 2 == 0 ? ".a" : "."; // empty components count, too
    }
    const std::string refusal = "Logger name has too many components: 1001";
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([&] { LoggerFactory::getLogger(deepest + ".a"); }),
              refusal);
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([&] { LoggerFactory::getLogger(deepest, "a"); }),
              refusal);
    EXPECT_FALSE(LoggerFactory::loggerExists(std::string(100'000, 'a').replace(1, 1, ".")));
    EXPECT_THAT(LoggerFactory::getLoggerNames(), IsEmpty());
    EXPECT_EQ(LoggerFactory::getLogger("not.in.the.name/" + deepest).getName(), deepest);
    EXPECT_THAT(LoggerFactory::getLoggerNames(), SizeIs(1000));

    TestSupport::StreamCapture errors(std::cerr);
    Util::Properties properties;
    properties["logger." + deepest + ".a.level"] = "INFO";
    properties["logger.b.level"] = "DEBUG";
    LogManager::init(properties);
    EXPECT_EQ(errors.text(), "Exception parsing property logger." + deepest + ".a.level: " + refusal + "\n");
    EXPECT_EQ(LoggerFactory::getLogger("b").getLevel(), Level::DEBUG);
    LogManager::finish();
}

TEST(Logger, SettingsSpreadToTheSubtreeAndToNewChildren) {
    Logger& a = LoggerFactory::getLogger("a");
    Logger& ab = LoggerFactory::getLogger("a.b");
    TestSupport::RecordingListener listener;
    LogManager::registerCommandListener("DynamicLogLevelFilterSoft", &listener);
    a.setLevel(Level::DEBUG, true);
    EXPECT_THAT(listener.arguments, ElementsAre("DEBUG"));
    a.setExpirationTime(Time(1, HOUR));
    EXPECT_EQ(ab.getLevel(), Level::DEBUG);
    EXPECT_EQ(ab.getExpirationTime(), Time(1, HOUR));
    ab.setLevel(Level::INFO, false);
    EXPECT_EQ(a.getLevel(), Level::DEBUG);
    Logger& ax = LoggerFactory::getLogger("a.x");
    EXPECT_EQ(ax.getLevel(), Level::DEBUG);
    EXPECT_EQ(ax.getExpirationTime(), Time(1, HOUR));
    EXPECT_EQ(LoggerFactory::getRootLogger().getLevel(), Level::WARNING);
    EXPECT_THAT(listener.arguments, SizeIs(1));
}

TEST(Logger, AppendersAreInheritedAndRemovedWithAllTheirEntries) {
    RecordingAppender appender("recording");
    Logger& root = LoggerFactory::getRootLogger();
    Logger& before = LoggerFactory::getLogger("before");
    root.addAppender(&appender);
    before.addAppender(&appender);
    before.error("twice", 0, "");
    LoggerFactory::getLogger("after").error("once", 0, "");
    EXPECT_THAT(appender.texts, ElementsAre("twice", "twice", "once"));
    root.removeAppender(&appender);
    before.error("unseen", 0, "");
    EXPECT_THAT(appender.texts, SizeIs(3));
}

TEST(Logger, FillsTheMessageFromTheCall) {
    RecordingAppender appender("fields");
    Logger& logger = LoggerFactory::getLogger("net");
    logger.addAppender(&appender);
    logger.error("text", 120, "Socket.cpp");
    logger.setLevel(static_cast<Level::LogLevel>(70), false); // rejects every message but the next
    logger.audit("unseen", 0, "");
    logger.config(ConfigurationMessage("reloaded"));
    ASSERT_THAT(appender.messages, SizeIs(2));
    EXPECT_EQ(formatLogLine(appender.messages[0]), Time::now().toString() + " net Socket.cpp:120 ERROR text");
    const LogMessage& config = appender.messages[1];
    EXPECT_EQ(formatLogLine(config), Time::now().toString() + " net reloaded");
    EXPECT_EQ(config.getLevel(), Level::AUDIT);
    EXPECT_EQ(config.getLine(), 0);
}

TEST(Logger, AnExpiredLevelFallsBackWithTheNextLoggableMessage) {
    RecordingAppender appender("recording");
    Logger& logger = LoggerFactory::getLogger("expiring");
    logger.addAppender(&appender);
    logger.setExpirationTime(Time(1, MIN));
    logger.setLevel(Level::DEBUG, false);
    const Time later = Time::now() + Time(30, SEC);
    setClock(later);
    Logger& child = LoggerFactory::getLogger("expiring.child");
    setClock(later + Time(30, SEC));
    logger.debug("in time", 0, "");
    setClock(later + Time(30, SEC) + Time(1, MSEC));
    logger.trace("below the level", 0, "");
    EXPECT_EQ(logger.getLevel(), Level::DEBUG);
    logger.debug("too late", 0, "");
    EXPECT_EQ(logger.getLevel(), Level::WARNING);
    child.debug("in time by its own clock", 0, "");
    EXPECT_THAT(appender.texts, ElementsAre("in time", "in time by its own clock"));

    logger.setLevel(Level::TRACE, false);
    logger.debug("in time again", 0, "");
    setClock(later + Time(1, HOUR));
    logger.warning("passes, and takes the level back", 0, "");
    EXPECT_EQ(logger.getLevel(), Level::WARNING);
    EXPECT_THAT(appender.texts, SizeIs(4));
    logger.setLevel(Level::ERROR, false);
    setClock(later + Time(2, HOUR));
    logger.error("never expires", 0, "");
    EXPECT_EQ(logger.getLevel(), Level::ERROR);
}
