#include "AcceptanceSupport.h"

#include "log/AppenderOptions.h"
#include "log/LogException.h"
#include "zav-util/UtilException.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;
using Util::TimeUtils::Time;

namespace {

const char* const WHILE_LOGGING = "LogManager::reload must not be called while logging.";

/// Blocks threads that enter until it is opened.
class Door {
public:
    /// Signals the arrival of a thread, and blocks it.
    void enter() {
        std::unique_lock<std::mutex> lock(mutex_);
        hasArrived_ = true;
        change_.notify_all();
        change_.wait(lock, [this] { return isOpen_; });
    }

    void awaitArrival() {
        std::unique_lock<std::mutex> lock(mutex_);
        change_.wait(lock, [this] { return hasArrived_; });
    }

    void open() {
        const std::lock_guard<std::mutex> lock(mutex_);
        isOpen_ = true;
        change_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable change_;
    bool hasArrived_ = false;
    bool isOpen_ = false;
};

class Reload : public Application {
protected:
    /// The text of the exception that a reload with these lines throws.
    std::string refusalOf(const std::string& lines) {
        return textThrownBy<std::exception>([&] { reload(lines); });
    }

    /// Registers a class whose appenders call a test's function: "appender.A = CallingAppender".
    void registerCalls(const CallingAppender::Call& call) {
        LogManager::registerAppenderClass("CallingAppender", [call](const AppenderOptions& options) {
            return std::make_unique<CallingAppender>(call, options.synchronous);
        });
    }
};

/// Each logger but the root with its level and the minutes of its expiration, the root first.
std::vector<std::string> levelsOfAll() {
    std::vector<std::string> levels;
    std::vector<std::string> names = LoggerFactory::getLoggerNames();
    names.insert(names.begin(), "root");
    for (const std::string& name : names) {
        const Logger& logger =
            name == "root" ? LoggerFactory::getRootLogger() : LoggerFactory::getLogger(name);
        const std::uint64_t minutes =
            logger.getExpirationTime().microseconds() / Time(1, Util::TimeUtils::MIN).microseconds();
        levels.push_back(name + " " + Level::toString(logger.getLevel()) + " " + std::to_string(minutes));
    }
    return levels;
}

std::vector<std::string> namesOfAppenders() {
    std::vector<std::string> names;
    for (const AppenderStatus& appender : LogManager::appenders()) {
        names.push_back(appender.name);
    }
    return names;
}

} // namespace

TEST_F(Reload, GivesLoggersTheLevelsOfAFreshProcess) {
    ASSERT_TRUE(init("logger.root.level = DEBUG\nlogger.root.expiration = 3\nlogger.net.level = TRACE\n"
                     "logger.net.expiration = 7\nlogger.old.level = AUDIT\n"));
    LoggerFactory::getLogger("net.tcp").setLevel(Level::ERROR, false);
    LoggerFactory::getLogger("own.child").setLevel(Level::AUDIT, false);
    LogManager::setLevelFor("old", Level::TRACE, Time(1, Util::TimeUtils::HOUR));
    RecordingListener listener;
    LogManager::registerCommandListener("DynamicLogLevelFilterSoft", &listener);
    StandardErrorCapture standardError;
    reload("logger.db.table.level = INFO\nlogger.root.level = ERROR\nlogger.db.expiration = 2\n"
           "logger.root.a.level = TRACE\n" // precedes the root's, which overrides it
           "logger.net.level = LOUD\nlogger.net.expiration = 5x\nlogger.fresh.level = LOUD\n");
    const std::string reports = standardError.text();
    EXPECT_THAT(levelsOfAll(), ElementsAre("root ERROR 0", "db ERROR 2", "db.table INFO 2", "fresh ERROR 0",
                                           "net TRACE 7", "net.tcp TRACE 7", "old ERROR 0", "own ERROR 0",
                                           "own.child ERROR 0", "root ERROR 0", "root.a ERROR 0"));
    EXPECT_EQ(reports, "Exception parsing property logger.fresh.level: There is no 'LOUD' LogLevel defined.\n"
                       "Exception parsing property logger.net.expiration: Can't convert 5x to integer\n"
                       "Exception parsing property logger.net.level: There is no 'LOUD' LogLevel defined.\n");
    EXPECT_THAT(listener.arguments, IsEmpty());
    EXPECT_EQ(LoggerFactory::getLogger("old.later").getLevel(), Level::ERROR);
    reload("");
    EXPECT_THAT(levelsOfAll(), Each(HasSubstr(" WARNING 0")));
}

TEST_F(Reload, LeavesAppendersAloneWhoseKeysAreTheSame) {
    const std::string same = "appender.b = FileAppender\nappender.b.dir = DIR\nappender.b.file = b.\n"
                             "appender.b.level = WARNING\nappender.b.expiration = 1 hour\n"
                             "logger.root.level = TRACE\n";
    ASSERT_TRUE(init(same + "appender.c = SimpleFileAppender\nappender.c.dir = DIR\n"));
    RecordingAppender listed("own", true);
    Logger& net = LoggerFactory::getLogger("net");
    net.addAppender(&listed);
    RecordingListener listener;
    LogManager::registerCommandListener("own", &listener);
    net.error("1");
    LogManager::command("DynamicLogLevelFilterSoft", "DEBUG");
    LogManager::setLevelFor("net", Level::TRACE, Time(1, Util::TimeUtils::HOUR));
    net.debug("2");
    reload(same + "appender.a = SimpleFileAppender\nappender.a.dir = DIR\nappender.a.message_type = LOG\n");
    net.debug("3");
    net.error("4");
    LogManager::command("own", "heard");
    EXPECT_THAT(lastWordsOf("b.0"), ElementsAre("1", "2", "4")); // no longer lowered
    EXPECT_FALSE(fileExists(directory_ / "b.1"));
    EXPECT_THAT(lastWordsOf("a"), ElementsAre("3", "4"));
    EXPECT_THAT(lastWordsOf("c"), ElementsAre("1", "2"));
    EXPECT_THAT(listed.texts, ElementsAre("1", "2", "3", "4"));
    EXPECT_THAT(listener.arguments, ElementsAre("heard"));
    const std::vector<AppenderStatus> statuses = LogManager::appenders();
    ASSERT_THAT(statuses, SizeIs(2));
    EXPECT_EQ(statuses[0].name + statuses[0].className, "aSimpleFileAppender");
    EXPECT_EQ(statuses[1].name, "b");
    EXPECT_EQ(statuses[1].level, Level::WARNING);
    EXPECT_EQ(statuses[1].until, Time());

    reload(same + "appender.b.fileNumber = 5\n"); // a new appender, and so a new file
    net.error("5");
    EXPECT_THAT(lastWordsOf("b.0"), ElementsAre("5"));
    EXPECT_THAT(lastWordsOf("b.1"), ElementsAre("1", "2", "4"));
    net.removeAppender(&listed);
}

TEST_F(Reload, HasWhatIsQueuedWrittenByTheAppendersOfBefore) {
    const std::string queue = "zav.log.AsynchronousDispatcher.waitingPeriod = 3600\n"
                              "logger.root.level = DEBUG\n"
                              "appender.kept = SimpleFileAppender\nappender.kept.dir = DIR\n"
                              "appender.kept.asynchronous = true\nappender.kept.level = ERROR\n"
                              "appender.kept.expiration = 1 hour\n";
    const std::string series = "appender.s = FileAppender\nappender.s.dir = DIR\nappender.s.file = s.\n";
    const std::string file = "appender.f = SimpleFileAppender\nappender.f.dir = DIR\n";
    ASSERT_TRUE(init(queue + series + file + "appender.s.asynchronous = true\n"));
    Logger& net = LoggerFactory::getLogger("net");
    LogManager::command("DynamicLogLevelFilterSoft", "DEBUG");
    net.debug("1");
    reload(queue + series + file + "appender.s.asynchronous = true\nappender.s.fileNumber = 5\n" +
           "appender.f.asynchronous = true\n");
    net.debug("2");
    net.error("3");
    reload(queue + series + file); // a synchronous appender must wait for what was queued
    net.debug("4");
    EXPECT_THAT(lastWordsOf("s.0"), ElementsAre("4"));
    EXPECT_THAT(lastWordsOf("s.1"), ElementsAre("2", "3"));
    EXPECT_THAT(lastWordsOf("s.2"), ElementsAre("1"));
    EXPECT_THAT(lastWordsOf("f"), ElementsAre("1", "2", "3", "4"));
    EXPECT_THAT(lastWordsOf("kept"), ElementsAre("1", "3")); // each filtered as when it was logged
    const LogStatistics statistics = LogManager::statistics();
    EXPECT_EQ(statistics.queued, statistics.delivered + statistics.waiting);
    reload("appender.f = SimpleFileAppender\nappender.f.dir = DIR\n"); // stops the consumer
    net.error("5");
    reload(queue); // starts one again
    net.error("6");
    EXPECT_TRUE(LogManager::flush());
    EXPECT_THAT(lastWordsOf("kept"), ElementsAre("1", "3", "6"));
    EXPECT_EQ(lastWordsOf("f").back(), "5");
}

TEST_F(Reload, TakesTheDispatchersSettingsOfAFreshProcess) {
    const std::string prefix = "zav.log.AsynchronousDispatcher.";
    const std::string file = "appender.f = SimpleFileAppender\nappender.f.dir = DIR\n"
                             "appender.f.asynchronous = true\n";
    ASSERT_TRUE(init(file + prefix + "maxQueueSize = 1\n" + prefix + "priority = 0\n"));
    StandardErrorCapture standardError;
    reload(file + prefix + "maxQueueSize = many\n");
    Logger& net = LoggerFactory::getLogger("net");
    net.error("discarded"); // since the queue still has no room
    reload(file);           // the default size applies, which has room
    for (int number = 0; number < 100; ++number) {
        net.error("delivered");
    }
    EXPECT_TRUE(LogManager::flush());
    EXPECT_THAT(standardError.text(),
                StartsWith("AsynchronousDispatcher::configure failure for option " + prefix +
                           "maxQueueSize. Exception: Can't convert many to integer\n"));
    const LogStatistics statistics = LogManager::statistics();
    EXPECT_EQ(statistics.discarded, 1U);
    EXPECT_EQ(statistics.delivered, 100U);
    EXPECT_THAT(lastWordsOf("f"), AllOf(SizeIs(100), Each("delivered")));
}

TEST_F(Reload, ChangesNothingIfInitWouldThrow) {
    EXPECT_EQ(textThrownBy<LogException>([] { LogManager::reload(); }), "The library is not initialised.");
    EXPECT_EQ(textThrownBy<LogException>([] { LogManager::reload(Util::Properties()); }),
              "The library is not initialised.");
    const std::string good =
        "logger.net.level = TRACE\nappender.a = FileAppender\nappender.a.dir = DIR\n"
        "appender.a.file = a.\nappender.a.level = ERROR\nappender.a.expiration = 1 hour\n"
        "appender.b = SimpleFileAppender\nappender.b.dir = DIR\n";
    ASSERT_TRUE(init(good));
    Logger& net = LoggerFactory::getLogger("net");
    LogManager::command("DynamicLogLevelFilterSoft", "DEBUG");
    net.debug("1");
    const std::vector<std::string> levels = levelsOfAll();
    EXPECT_THAT(refusalOf("x\n"), AllOf(StartsWith("Property file "), HasSubstr("app.properties")));
    EXPECT_EQ(refusalOf("logger.db.level = INFO\nappender.b = Stdout\n"),
              "No factory registered for appenderName = b, appenderClass = Stdout");
    EXPECT_EQ(refusalOf(good + "appender.c = StdoutAppender\nappender.c.level = LOUD\n"),
              "There is no 'LOUD' LogLevel defined.");
    EXPECT_EQ(refusalOf(good + "appender..a = FileAppender\n"), "Appender a has already been registered.");
    EXPECT_EQ(textThrownBy<LogException>([] { LogManager::reload(""); }), "File name parameter is empty.");
    const std::string missing = directory_ / "missing";
    EXPECT_EQ(textThrownBy<Util::UtilException>([&] { LogManager::reload(missing); }),
              textThrownBy<Util::UtilException>([&] { LogManager::init(missing); }));
    net.debug("2");
    EXPECT_EQ(levelsOfAll(), levels);
    EXPECT_THAT(namesOfAppenders(), ElementsAre("a", "b"));
    EXPECT_THAT(lastWordsOf("a.0"), ElementsAre("1", "2"));
    EXPECT_THAT(lastWordsOf("b"), ElementsAre("1", "2"));

    LogManager::finish();
    ASSERT_TRUE(LogManager::init(Util::Properties{{"logger.net.level", "INFO"}}));
    EXPECT_EQ(textThrownBy<LogException>([] { LogManager::reload(); }), "No file was given to init.");
    writeProperties(good);
    LogManager::reload(directory_ / "app.properties");
    EXPECT_EQ(net.getLevel(), Level::TRACE);
}

TEST_F(Reload, IsRefusedWhileLogging) {
    ASSERT_TRUE(init("appender.a = SimpleFileAppender\nappender.a.dir = DIR\n"));
    const auto refusal = [] { return textThrownBy<LogException>([] { LogManager::reload(); }); };
    std::vector<std::string> refusals;
    CallingAppender appender([&](const LogMessage&) { refusals.push_back(refusal()); });
    CallingListener listener([&](const std::string&) { refusals.push_back(refusal()); });
    LoggerFactory::getLogger("net").addAppender(&appender);
    LoggerFactory::getLogger("net").error("1");
    LogManager::registerCommandListener("x", &listener);
    LogManager::command("x", "");
    EXPECT_THAT(refusals, ElementsAre(WHILE_LOGGING, WHILE_LOGGING));
    LogManager::registerAppenderClass("ReloadingAppender", [](const AppenderOptions&) {
        LogManager::reload();
        return nullptr;
    });
    EXPECT_EQ(refusalOf("appender.r = ReloadingAppender\n"),
              "LogManager::reload must not be called while an appender is made.");
    LoggerFactory::getLogger("net").removeAppender(&appender);
}

TEST_F(Reload, AMakerOfAppendersCannotTakeThoseInServiceDown) {
    LogManager::registerAppenderClass("MeddlingAppender", [this](const AppenderOptions& options) {
        EXPECT_EQ(textThrownBy<LogException>([] { LogManager::finish(); }),
                  "LogManager::finish must not be called while an appender is made.");
        const auto reinit = [this] { EXPECT_FALSE(LogManager::init(directory_ / "app.properties")); };
        if (options.name == "b") {
            EXPECT_EQ(textThrownBy<LogException>(reinit),
                      "LogManager::init must not be called while an appender is made.");
        } else {
            reinit(); // the library is initialised
        }
        return std::make_unique<RecordingAppender>(options);
    });
    const std::string file = "appender.a = SimpleFileAppender\nappender.a.dir = DIR\n";
    ASSERT_TRUE(init(file + "appender.b = MeddlingAppender\n"));
    reload(file + "appender.c = MeddlingAppender\n");
    EXPECT_THAT(namesOfAppenders(), ElementsAre("a", "c"));
    LoggerFactory::getLogger("net").error("1");
    EXPECT_THAT(lastWordsOf("a"), ElementsAre("1"));
}

TEST_F(Reload, LeavesListenersAloneThatAreNamedLikeAnAppenderWhichGoes) {
    RecordingListener listener;
    LogManager::registerCommandListener("a", &listener);
    ASSERT_TRUE(init("appender.a = StdoutAppender\n"));
    EXPECT_EQ(refusalOf("appender.a = SimpleFileAppender\nappender.b = Stdout\n"),
              "No factory registered for appenderName = b, appenderClass = Stdout");
    reload("");
    LogManager::command("a", "heard");
    EXPECT_THAT(listener.arguments, ElementsAre("heard"));
}

TEST_F(Reload, HasOldFilesSeenToBeforeTheFirstLine) {
    ASSERT_TRUE(init(""));
    for (const char* const stamp : {"20260101T000000Z", "20260102T000000Z"}) {
        writeFile(directory_ / ("a.log." + std::string(stamp)), "rolled\n");
    }
    reload("appender.a = RollingFileAppender\nappender.a.dir = DIR\nappender.a.keepFiles = 1\n");
    EXPECT_FALSE(fileExists(directory_ / "a.log.20260101T000000Z"));
    EXPECT_TRUE(fileExists(directory_ / "a.log.20260102T000000Z"));
}

TEST_F(Reload, KnowsClassesThatWereRegisteredSinceInit) {
    ASSERT_TRUE(init(""));
    std::vector<std::string> texts;
    registerCalls([&texts](const LogMessage& message) { texts.push_back(message.getText()); });
    reload("appender.calling = CallingAppender\n");
    LoggerFactory::getLogger("net").error("1");
    EXPECT_THAT(texts, ElementsAre("1"));
    reload("appender.calling = CallingAppender\nappender.calling.colour = red\n"); // specific to the class
    LoggerFactory::getLogger("net").error("2");
    EXPECT_THAT(texts, ElementsAre("1", "2"));
}

/// \param asynchronous whether the consumer is stuck
class ReloadOfStuckAppender : public Reload, public WithParamInterface<bool> {};

TEST_P(ReloadOfStuckAppender, KeepsNoOtherLoggerWaiting) {
    Door door;
    std::atomic<int> written{0};
    registerCalls([&](const LogMessage& message) {
        ++written;
        if (message.getLoggerName() == "stuck") {
            door.enter();
        }
    });
    const std::string calling = "appender.calling = CallingAppender\nappender.calling.asynchronous = " +
                                std::string(GetParam() ? "true" : "false") + "\n" +
                                "zav.log.AsynchronousDispatcher.waitingPeriod = 0\n";
    const auto file = [](const std::string& name) {
        return "appender." + name + " = SimpleFileAppender\nappender." + name + ".dir = DIR\n";
    };
    ASSERT_TRUE(init(calling + file("before")));
    std::thread stuck([] { LoggerFactory::getLogger("stuck").error("stuck"); });
    door.awaitArrival();
    writeProperties(file("after"));
    std::thread reloading([] { LogManager::reload(); });
    Logger& other = LoggerFactory::getLogger("other");
    if (GetParam()) { // the appenders are exchanged at once, and the reload waits for what was queued
        while (!fileExists(directory_ / "after")) {
            other.error("meanwhile");
        }
    } else {
        other.error("meanwhile");
    }
    EXPECT_TRUE(fileExists(directory_ / "before"));
    door.open();
    stuck.join();
    reloading.join();
    const int writtenBefore = written;
    other.error("at the end");
    EXPECT_EQ(written, writtenBefore);
    EXPECT_EQ(lastWordsOf("after").back(), "end");
    std::vector<std::string> texts = lastWordsOf("before");
    const std::vector<std::string> after = lastWordsOf("after");
    texts.insert(texts.end(), after.begin(), after.end());
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "stuck"), 1);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "end"), 1);
}

INSTANTIATE_TEST_SUITE_P(SynchronousAndNot, ReloadOfStuckAppender, Bool());
