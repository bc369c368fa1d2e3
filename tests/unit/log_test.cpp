#include "TestSupport.h"

#include "log/ConfigurationMessage.h"
#include "log/LogException.h"
#include "log/LogLine.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "log/config/LoggerKeys.h"
#include "platform/Process.h"
#include "zav-util/Properties.h"
#include "zav-util/SystemInformation.h"

#include <gmock/gmock.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::RecordingAppender;
using TestSupport::RecordingListener;

TEST(Level, NamesAndNumbersMatchExactly) {
    for (const Level::LogLevel level :
         {Level::AUDIT, Level::ERROR, Level::WARNING, Level::INFO, Level::DEBUG, Level::TRACE}) {
        EXPECT_EQ(Level::fromString(Level::toString(level)), level);
    }
    EXPECT_EQ(Level::toString(static_cast<Level::LogLevel>(45)), "ERROR");
    for (const std::string name : {"Warning", "", " INFO", "30"}) {
        EXPECT_EQ(TestSupport::textThrownBy<LogException>([&] { Level::fromString(name); }),
                  "There is no '" + name + "' LogLevel defined.");
    }
    EXPECT_EQ(messageTypeFromString("CFG"), CFG);
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([] { messageTypeFromString("cfg"); }),
              "There is no 'cfg' MessageType defined.");
}

namespace {

std::string lineOf(int line, const std::string& file, MessageType type = LOG) {
    const LogMessage message("net.tcp", Time(1367935407123000, USEC), Level::INFO, "connected", line, file,
                             type);
    const std::string text = formatLogLine(message);
    EXPECT_EQ(text.substr(0, 26), message.getTime().toString());
    return text.substr(26);
}

} // namespace

TEST(LogLine, ShowsALocationOnlyWhereOneIsGiven) {
    EXPECT_EQ(lineOf(120, "Socket.cpp"), " net.tcp Socket.cpp:120 INFO connected");
    EXPECT_EQ(lineOf(0, ""), " net.tcp INFO connected");
    EXPECT_EQ(lineOf(-3, "Socket.cpp"), " net.tcp Socket.cpp INFO connected");
    EXPECT_EQ(lineOf(120, ""), " net.tcp :120 INFO connected");
    EXPECT_EQ(lineOf(120, "Socket.cpp", CFG), " net.tcp connected");
}

TEST(LogLine, WithProcessNamesProgramProcessAndHost) {
    const LogMessage message = TestSupport::makeMessage("two\nlines");
    EXPECT_EQ(formatLogLineWithProcess(message), message.getTime().toString() + " " + Util::getProgramName() +
                                                     " " + std::to_string(Platform::processId()) + " " +
                                                     Util::getHostName() + " net.tcp INFO two\nlines");
}

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

TEST(LoggerKeys, ParentsComeBeforeTheirChildrenAndTheRootFirst) {
    std::vector<std::string> order;
    for (const LoggerKey& key :
         orderLoggerKeys({"appender.a", "logger", "logger.", "logger.a.b.level", "logger.a.level",
                          "logger.root.level", "logger.root.x.level", "logger.x", "loggers.a.level"})) {
        order.push_back(key.loggerName);
    }
    EXPECT_THAT(order, ElementsAre("root", "root.x", "a", "a.b"));
}

TEST(LoggerFactory, AppliesKeysAndReportsBadValues) {
    Util::Properties properties;
    properties["logger.a.b.level"] = "INFO";
    properties["logger.a.level"] = "ERROR";
    properties["logger.a.expiration"] = "5";
    properties["logger.b.expiration"] = "5x";
    properties["logger.b.level"] = "Verbose";
    properties["logger.b.colour"] = "red";
    properties["logger.root.level"] = "DEBUG";
    const TestSupport::StreamCapture errors(std::cerr);
    LoggerFactory::initLoggers(properties);
    EXPECT_EQ(LoggerFactory::getRootLogger().getLevel(), Level::DEBUG);
    EXPECT_EQ(LoggerFactory::getLogger("a").getLevel(), Level::ERROR);
    EXPECT_EQ(LoggerFactory::getLogger("a.b").getLevel(), Level::INFO);
    EXPECT_EQ(LoggerFactory::getLogger("a.b").getExpirationTime(), Time(300, SEC));
    EXPECT_EQ(LoggerFactory::getLogger("b").getLevel(), Level::DEBUG);
    const std::string level =
        "Exception parsing property logger.b.level: There is no 'Verbose' LogLevel defined.\n";
    const std::string expiration =
        "Exception parsing property logger.b.expiration: Can't convert 5x to integer\n";
    EXPECT_THAT(errors.text(), testing::AnyOf(level + expiration, expiration + level));
}

namespace {

class ThrowingListener : public CommandListener {
public:
    void onCommand(const std::string&) override { throw 1; }
};

} // namespace

TEST(CommandBus, DeliversInOrderOfRegistrationUntilOneThrows) {
    RecordingListener first;
    RecordingListener behind;
    ThrowingListener throwing;
    LogManager::registerCommandListener("X", &first);
    LogManager::registerCommandListener("X", &first);
    LogManager::registerCommandListener("X", &throwing);
    LogManager::registerCommandListener("X", &behind);
    EXPECT_THROW(LogManager::command("X", "a"), int);
    LogManager::command("x", "b");
    EXPECT_THAT(first.arguments, ElementsAre("a", "a"));
    EXPECT_THAT(behind.arguments, IsEmpty());
    LogManager::unregisterCommandListener("X");
    LogManager::command("X", "c");
    EXPECT_THAT(first.arguments, SizeIs(2));
    LogManager::registerCommandListener("X", &first);
    LogManager::finish();
    LogManager::command("X", "d");
    EXPECT_THAT(first.arguments, SizeIs(2));
}
