#include "AcceptanceSupport.h"

#include "log/ConfigurationMessage.h"
#include "log/LogException.h"
#include "zav-util/UtilException.h"

#include <algorithm>

using namespace ZAV;
using namespace ZAV::Log;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using TestSupport::Application;
using TestSupport::inThreads;
using TestSupport::linesIn;
using TestSupport::StandardErrorCapture;
using TestSupport::textThrownBy;

namespace {

class Configuration : public Application {
protected:
    template <typename Exception>
    std::string rejectionOf(const std::string& lines) {
        return textThrownBy<Exception>([&] { init(lines); });
    }
};

std::vector<std::string> wordsBy(int thread, int count) {
    std::vector<std::string> words;
    for (int i = 0; i < count; ++i) {
        words.push_back(std::to_string(thread) + "-" + std::to_string(i));
    }
    return words;
}

} // namespace

TEST_F(Configuration, EveryLineIsWhereThePropertyFileSaid) {
    StandardErrorCapture errors;
    ASSERT_TRUE(init("logger.root.level = WARNING\n"
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
    inThreads(4, [](int thread) {
        Logger& net = LoggerFactory::getLogger("net.peer" + std::to_string(thread));
        for (const std::string& word : wordsBy(thread, 50)) {
            net.debug(word, 0, "");
        }
        LoggerFactory::getLogger("db").info("unseen", 0, "");
        LoggerFactory::getLogger("db").error("alarm", 7, "Table.cpp");
        net.config(ConfigurationMessage("set"));
    });
    LogManager::finish();
    EXPECT_THAT(linesIn(errors.text()),
                ElementsAre("db Table.cpp:7 ERROR alarm", "db Table.cpp:7 ERROR alarm",
                            "db Table.cpp:7 ERROR alarm", "db Table.cpp:7 ERROR alarm"));
    EXPECT_THAT(linesOf("settings.log"),
                AllOf(SizeIs(4), Each(AllOf(StartsWith("zav-log-acceptance-tests"), HasSubstr(" net.peer"),
                                            EndsWith(" set")))));
    EXPECT_THAT(linesOf("net.log0"), SizeIs(4 * 51));
    EXPECT_THAT(linesOf("all0"), SizeIs(4 * 52));
    for (const char* file : {"net.log0", "all0"}) {
        const std::vector<std::string> words = lastWordsOf(file);
        EXPECT_THAT(words, Contains("set").Times(4)) << file;
        for (int thread = 0; thread < 4; ++thread) {
            std::vector<std::string> ofThread;
            std::copy_if(
                words.begin(), words.end(), std::back_inserter(ofThread),
                [&](const std::string& word) { return word.rfind(std::to_string(thread) + "-", 0) == 0; });
            EXPECT_EQ(ofThread, wordsBy(thread, 50)) << file;
        }
    }
}

TEST_F(Configuration, ADynamicLevelIsLoweredByACommandAndFallsBack) {
    ASSERT_TRUE(init("logger.net.level = TRACE\n"
                     "appender.lasting = SimpleFileAppender\n"
                     "appender.lasting.dir = DIR\n"
                     "appender.lasting.level = WARNING\n"
                     "appender.lasting.expiration = 1 day\n"
                     "appender.brief = SimpleFileAppender\n"
                     "appender.brief.dir = DIR\n"
                     "appender.brief.level = WARNING\n"
                     "appender.brief.expiration = 1 msec\n"));
    Logger& net = LoggerFactory::getLogger("net");
    net.info("too-early", 0, "");
    LogManager::command("DynamicLogLevelFilterSoft", "INFO");
    net.info("seen", 0, "");
    net.debug("unseen", 0, "");
    EXPECT_THAT(lastWordsOf("lasting"), ElementsAre("seen"));
    // Each message is written until the first one that is later than the period; the test hangs if none is.
    std::size_t before = 0;
    do {
        before = lastWordsOf("brief").size();
        net.info("brief", 0, "");
    } while (lastWordsOf("brief").size() > before);
    net.info("after", 0, "");
    net.warning("warning", 0, "");
    EXPECT_THAT(lastWordsOf("brief"), AllOf(Contains("warning"), Not(Contains("after"))));
    net.setLevel(Level::TRACE, true);
    net.trace("lowered", 0, "");
    EXPECT_EQ(lastWordsOf("lasting").back(), "lowered");
}

TEST_F(Configuration, ABadAppenderSettingIsRefusedWithItsText) {
    const std::pair<std::string, std::string> refusals[] = {
        {"appender.x = Stdout\n", "No factory registered for appenderName = x, appenderClass = Stdout"},
        {"appender.x = FileAppender\nappender..x = FileAppender\n",
         "Appender x has already been registered."},
        {"appender.x = FileAppender\nappender.x.level = info\n", "There is no 'info' LogLevel defined."},
        {"appender.x = StdoutAppender\nappender.x.level = Info\nappender.x.expiration = 1\n",
         "There is no 'Info' LogLevel defined."},
        {"appender.x = StdoutAppender\nappender.x.level = INFO\nappender.x.expiration = x min\n",
         "Wrong value for the x.expiration property: Can't convert x to integer"},
        {"appender.x = SimpleFileAppender\nappender.x.message_type = cfg\n",
         "There is no 'cfg' MessageType defined."}};
    for (const auto& refusal : refusals) {
        EXPECT_EQ(rejectionOf<LogException>(refusal.first), refusal.second);
    }
    const std::string file = directory_ / "app.properties";
    EXPECT_EQ(rejectionOf<Util::UtilException>("appender.x = FileAppender\nappender.x = StdoutAppender\n"),
              "Property file " + file + " contains a property redefinition on line 2; key = 'appender.x'");
    EXPECT_TRUE(init("appender.x = SimpleFileAppender\nappender.x.dir = DIR\n"));
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
    std::istringstream text(errors.text());
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    EXPECT_THAT(lines,
                testing::UnorderedElementsAre(
                    "Exception parsing property logger.net.level: There is no 'Verbose' LogLevel defined.",
                    "Exception parsing property logger.net.expiration: Can't convert 5x to integer",
                    dispatcher + "maxQueueSize. Exception: Can't convert many to integer",
                    dispatcher + "waitingPeriod. Exception: Can't convert 1.5 to integer",
                    dispatcher + "priority. Exception: Can't convert high to integer"));
    LoggerFactory::getLogger("db").debug("at-once", 0, "");
    EXPECT_THAT(lastWordsOf("x"), ElementsAre("at-once"));
}
