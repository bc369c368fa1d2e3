#include "AcceptanceSupport.h"

#include "log/ConfigurationMessage.h"
#include "log/LogException.h"
#include "zav-util/UtilException.h"

#include <chrono>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

class Configuration : public Application {};

} // namespace

TEST_F(Configuration, EveryLineIsWhereThePropertyFileSaid) {
    StandardErrorCapture errors;
    ASSERT_TRUE(init("application.name = demo\n"
                     "logger.root.level = WARNING\n"
                     "logger.net.level = DEBUG\n"
                     "appender.alarm = StdoutAppender\n"
                     "appender.alarm.ostream = cerr\n"
                     "appender.alarm.level = ERROR\n"
                     "appender.alarm.message_type = LOG\n"
                     "appender.net = FileAppender\n"
                     "appender.net.asynchronous = true\n"
                     "appender.net.filters = net\n"
                     "appender.net.dir = DIR\n"
                     "appender.net.file = net.log\n"
                     "appender.all = FileAppender\n"
                     "appender.all.dir = DIR\n"
                     "appender.settings = SimpleFileAppender\n"
                     "appender.settings.asynchronous = true\n"
                     "appender.settings.message_type = CFG\n"
                     "appender.settings.dir = DIR\n"
                     "appender.settings.file = settings.log\n"));
    Logger& net = LoggerFactory::getLogger("net.peer");
    net.debug("1", 0, "");
    net.trace("unseen", 0, "");
    LoggerFactory::getLogger("db").info("unseen", 0, "");
    LoggerFactory::getLogger("db").error("alarm", 7, "Table.cpp");
    net.config(ConfigurationMessage("set"));
    net.info("2", 0, "");
    LogManager::finish();
    net.error("unseen", 0, "");
    EXPECT_THAT(linesIn(errors.text()), ElementsAre("db Table.cpp:7 ERROR alarm"));
    EXPECT_THAT(linesOf("settings.log"),
                ElementsAre(AllOf(StartsWith("zav-log-acceptance-tests"), EndsWith(" net.peer set"))));
    EXPECT_THAT(linesOf("net.log0"), ElementsAre("net.peer DEBUG 1", "net.peer set", "net.peer INFO 2"));
    EXPECT_THAT(linesOf("all0"), ElementsAre("net.peer DEBUG 1", "db Table.cpp:7 ERROR alarm", "net.peer set",
                                             "net.peer INFO 2"));
}

TEST_F(Configuration, ACommandLowersADynamicLevel) {
    ASSERT_TRUE(init("logger.net.level = TRACE\n"
                     "appender.x = SimpleFileAppender\n"
                     "appender.x.dir = DIR\n"
                     "appender.x.level = WARNING\n"
                     "appender.x.expiration = 1 day\n"));
    Logger& net = LoggerFactory::getLogger("net");
    net.info("too-early", 0, "");
    LogManager::command("DynamicLogLevelFilterSoft", "INFO");
    net.info("by-command", 0, "");
    net.debug("unseen", 0, "");
    net.setLevel(Level::TRACE, true);
    net.trace("by-level", 0, "");
    EXPECT_THAT(lastWordsOf("x"), ElementsAre("by-command", "by-level"));
}

TEST_F(Configuration, ABadOneIsRefusedWithItsText) {
    const std::pair<std::string, std::string> refusals[] = {
        {"appender.x = Stdout\n", "No factory registered for appenderName = x, appenderClass = Stdout"},
        {"appender..x = FileAppender\n", "No factory registered for appenderName = x, appenderClass = "},
        {"appender.x = FileAppender\nappender..x = FileAppender\n",
         "Appender x has already been registered."},
        {"appender.x = FileAppender\nappender.x.level = info\n", "There is no 'info' LogLevel defined."},
        {"appender.x = StdoutAppender\nappender.x.level = INFO\nappender.x.expiration = x min\n",
         "Wrong value for the x.expiration property: Can't convert x to integer"},
        {"appender.x = SimpleFileAppender\nappender.x.message_type = cfg\n",
         "There is no 'cfg' MessageType defined."}};
    for (const auto& [lines, text] : refusals) {
        EXPECT_EQ(textThrownBy<LogException>([&, file = lines] { init(file); }), text);
    }
    EXPECT_EQ(textThrownBy<LogException>([] { LogManager::init(""); }), "File name parameter is empty.");
    EXPECT_TRUE(init("appender.x = SimpleFileAppender\nappender.x.dir = DIR\n"));
    // The file is read even though the library is initialised.
    EXPECT_EQ(textThrownBy<Util::UtilException>([this] { init("x = 1\nx = 2\n"); }),
              "Property file " + directory_ / "app.properties" +
                  " contains a property redefinition on line 2; key = 'x'");
    for (const std::string& file : {std::string("no such file"), directory_.path()}) {
        EXPECT_THAT(textThrownBy<Util::UtilException>([&] { LogManager::init(file); }),
                    StartsWith("Unable to open file: " + file + " from "));
    }
    LoggerFactory::getRootLogger().error("once", 0, "");
    EXPECT_THAT(lastWordsOf("x"), ElementsAre("once"));
}

TEST_F(Configuration, BadNumbersAreReportedAndTheOtherSettingsTakeEffect) {
    StandardErrorCapture errors;
    EXPECT_TRUE(init("logger.net.level = Verbose\n"
                     "logger.net.expiration = 5x\n"
                     "logger.db.level = DEBUG\n"
                     "appender.x = SimpleFileAppender\n"
                     "appender.x.dir = DIR\n"
                     "appender.x.asynchronous = TRUE\n"
                     "zav.log.AsynchronousDispatcher.maxQueueSize = many\n"
                     "zav.log.AsynchronousDispatcher.waitingPeriod = 1.5\n"
                     "zav.log.AsynchronousDispatcher.priority = high\n"));
    const std::string dispatcher = "AsynchronousDispatcher::configure failure for option "
                                   "zav.log.AsynchronousDispatcher.";
    EXPECT_THAT(linesIn(errors.text(), 0),
                UnorderedElementsAre(
                    "Exception parsing property logger.net.level: There is no 'Verbose' LogLevel defined.",
                    "Exception parsing property logger.net.expiration: Can't convert 5x to integer",
                    dispatcher + "maxQueueSize. Exception: Can't convert many to integer",
                    dispatcher + "waitingPeriod. Exception: Can't convert 1.5 to integer",
                    dispatcher + "priority. Exception: Can't convert high to integer"));
    LoggerFactory::getLogger("db").debug("at-once", 0, "");
    EXPECT_THAT(lastWordsOf("x"), ElementsAre("at-once"));
}

TEST(Clock, GivesTheTimeOfTheSystem) {
    using namespace std::chrono;
    const auto before = duration_cast<microseconds>((system_clock::now() - seconds(1)).time_since_epoch());
    const std::uint64_t now = Util::TimeUtils::Time::now().microseconds();
    const auto after = duration_cast<microseconds>(system_clock::now().time_since_epoch());
    EXPECT_GT(now, static_cast<std::uint64_t>(before.count())); // clock resolutions differ between systems
    EXPECT_LE(now, static_cast<std::uint64_t>(after.count()));
    EXPECT_EQ(now % 1000, 0U);
}
