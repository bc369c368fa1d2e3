#include "TestSupport.h"

#include "log/ConfigurationMessage.h"
#include "log/LogLine.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"

#include <gmock/gmock.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::RecordingAppender;
using TestSupport::RecordingListener;

TEST(LoggerFactory, MakesMissingLoggersOnTheWay) {
    EXPECT_THAT(LoggerFactory::getLoggerNames(), IsEmpty());
    EXPECT_FALSE(LoggerFactory::loggerExists("a.b"));
    Logger& c = LoggerFactory::getLogger("a.b.c");
    EXPECT_EQ(c.getName(), "a.b.c");
    LoggerFactory::getLogger("B");
    EXPECT_THAT(LoggerFactory::getLoggerNames(), ElementsAre("B", "a", "a.b", "a.b.c"));
    EXPECT_TRUE(LoggerFactory::loggerExists("a"));
    EXPECT_EQ(&LoggerFactory::getLogger("a", "dir\\b"), &LoggerFactory::getLogger("src/a.b"));
    EXPECT_EQ(LoggerFactory::getLogger("net", "C:\\src\\Socket.cpp").getName(), "net.Socket.cpp");
    EXPECT_EQ(LoggerFactory::getRootLogger().getName(), "root");
    EXPECT_FALSE(LoggerFactory::loggerExists("root"));
}

TEST(LoggerFactory, SplitsAtTheFirstDotAndKeepsEmptyNames) {
    EXPECT_EQ(LoggerFactory::getLogger(".x").getName(), ".x");
    EXPECT_THAT(LoggerFactory::getLoggerNames(), ElementsAre("", ".x"));
    EXPECT_FALSE(LoggerFactory::loggerExists(".x")); // the look-up skips the leading dot
    LoggerFactory::getLogger("x");
    EXPECT_TRUE(LoggerFactory::loggerExists(".x"));
}

TEST(Logger, SettingsSpreadToTheSubtreeAndToNewChildren) {
    Logger& a = LoggerFactory::getLogger("a");
    Logger& ab = LoggerFactory::getLogger("a.b");
    RecordingListener listener;
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
    Logger& after = LoggerFactory::getLogger("after");
    before.error("twice", 0, "");
    after.error("once", 0, "");
    after.info("below the level", 0, "");
    after.config(ConfigurationMessage("setting"));
    EXPECT_THAT(appender.texts, ElementsAre("twice", "twice", "once", "setting"));
    root.removeAppender(&appender);
    before.error("unseen", 0, "");
    EXPECT_THAT(appender.texts, SizeIs(4));
}

namespace {

class FieldsAppender : public Appender {
public:
    using Appender::Appender;
    std::vector<LogMessage> messages;

protected:
    void doOutput(const LogMessage& message) override { messages.push_back(message); }
};

} // namespace

TEST(Logger, FillsTheMessageFromTheCall) {
    FieldsAppender appender("fields");
    Logger& logger = LoggerFactory::getLogger("net");
    logger.addAppender(&appender);
    logger.error("text", 120, "Socket.cpp");
    logger.config(ConfigurationMessage("reloaded"));
    ASSERT_THAT(appender.messages, SizeIs(2));
    const LogMessage& error = appender.messages[0];
    EXPECT_EQ(formatLogLine(error).substr(26), " net Socket.cpp:120 ERROR text");
    EXPECT_EQ(error.getTime().microseconds() % 1000, 0U);
    const LogMessage& config = appender.messages[1];
    EXPECT_EQ(config.getLevel(), Level::AUDIT);
    EXPECT_EQ(config.getType(), CFG);
    EXPECT_EQ(config.getLine(), 0);
}

TEST(Logger, AnExpiredLevelFallsBackWithTheNextLoggableMessage) {
    RecordingAppender appender("recording");
    Logger& logger = LoggerFactory::getLogger("expiring");
    logger.addAppender(&appender);
    logger.setLevel(Level::DEBUG, false);
    logger.setExpirationTime(Time(1, HOUR));
    logger.debug("in time", 0, "");
    // A negative duration ends before it began, which spares the test the wait.
    logger.setExpirationTime(Time(static_cast<std::uint64_t>(-1), MIN));
    logger.trace("below the level", 0, "");
    EXPECT_EQ(logger.getLevel(), Level::DEBUG);
    logger.debug("too late", 0, "");
    EXPECT_EQ(logger.getLevel(), Level::WARNING);
    EXPECT_THAT(appender.texts, ElementsAre("in time"));
    logger.setLevel(Level::TRACE, false);
    logger.warning("passes, and takes the level back", 0, "");
    EXPECT_EQ(logger.getLevel(), Level::WARNING);
    EXPECT_THAT(appender.texts, SizeIs(2));
    logger.setLevel(Level::ERROR, false);
    logger.error("never expires", 0, "");
    EXPECT_EQ(logger.getLevel(), Level::ERROR);
}
