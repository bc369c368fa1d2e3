#include "AcceptanceSupport.h"

#include "log/AppenderOptions.h"
#include "log/LogException.h"
#include "log/LogSession.h"
#include "zav-util/UtilException.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;
using Util::TimeUtils::Time;

namespace {

const char* const WHILE_LOGGING = "LogManager::reload must not be called while logging.";

/// Keeps those who come to it until it is opened.
class Door {
public:
    /// Says that somebody has come, and waits.
    void enter() {
        std::unique_lock<std::mutex> lock(mutex_);
        hasComer_ = true;
        change_.notify_all();
        change_.wait(lock, [this] { return isOpen_; });
    }

    void awaitComer() {
        std::unique_lock<std::mutex> lock(mutex_);
        change_.wait(lock, [this] { return hasComer_; });
    }

    void open() {
        const std::lock_guard<std::mutex> lock(mutex_);
        isOpen_ = true;
        change_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable change_;
    bool hasComer_ = false;
    bool isOpen_ = false;
};

/// An application whose property file changes while it runs.
class Reload : public Application {
protected:
    /// \param lines of the property file, as for `init`
    void change(const std::string& lines) {
        writeProperties(lines);
        LogManager::reload();
    }

    /// The text of what a reload with these lines throws.
    std::string refusalOf(const std::string& lines) {
        return textThrownBy<std::exception>([&] { change(lines); });
    }

    /// Has appenders made by the calls of a test: "appender.A = CallingAppender".
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
    change("logger.db.table.level = INFO\nlogger.root.level = ERROR\nlogger.src/db.expiration = 2\n"
           "logger.root.a.level = TRACE\n" // stands before that of the root, which overrules it
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
    change("");
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
    change(same + "appender.a = SimpleFileAppender\nappender.a.dir = DIR\nappender.a.message_type = LOG\n");
    net.debug("3");
    net.error("4");
    LogManager::command("own", "heard");
    EXPECT_THAT(lastWordsOf("b.0"), ElementsAre("1", "2", "4")); // lowered no more
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

    change(same + "appender.b.fileNumber = 5\n"); // another one, and so another file
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
    change(queue + series + file + "appender.s.asynchronous = true\nappender.s.fileNumber = 5\n" +
           "appender.f.asynchronous = true\n");
    net.debug("2");
    net.error("3");
    change(queue + series + file); // who writes at once must wait for what was queued
    net.debug("4");
    EXPECT_THAT(lastWordsOf("s.0"), ElementsAre("4"));
    EXPECT_THAT(lastWordsOf("s.1"), ElementsAre("2", "3"));
    EXPECT_THAT(lastWordsOf("s.2"), ElementsAre("1"));
    EXPECT_THAT(lastWordsOf("f"), ElementsAre("1", "2", "3", "4"));
    EXPECT_THAT(lastWordsOf("kept"), ElementsAre("1", "3")); // as each was judged when it was logged
    const LogStatistics statistics = LogManager::statistics();
    EXPECT_EQ(statistics.queued, statistics.delivered + statistics.waiting);
    change("appender.f = SimpleFileAppender\nappender.f.dir = DIR\n"); // without a consumer
    net.error("5");
    change(queue); // and with one again
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
    change(file + prefix + "maxQueueSize = many\n");
    Logger& net = LoggerFactory::getLogger("net");
    net.error("discarded"); // since there is still room for no message
    change(file);           // that of a fresh process holds, which has room
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

TEST_F(Reload, KnowsClassesThatWereRegisteredSinceInit) {
    ASSERT_TRUE(init(""));
    std::vector<std::string> texts;
    registerCalls([&texts](const LogMessage& message) { texts.push_back(message.getText()); });
    change("appender.calling = CallingAppender\n");
    LoggerFactory::getLogger("net").error("1");
    EXPECT_THAT(texts, ElementsAre("1"));
    change("appender.calling = CallingAppender\nappender.calling.colour = red\n"); // a key of its own
    LoggerFactory::getLogger("net").error("2");
    EXPECT_THAT(texts, ElementsAre("1", "2"));
}

/// \param asynchronous whether it is the consumer that is stuck
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
    door.awaitComer();
    writeProperties(file("after"));
    std::thread reloading([] { LogManager::reload(); });
    Logger& other = LoggerFactory::getLogger("other");
    if (GetParam()) { // the places are changed at once, and what was queued is waited for
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

class FailureNotices : public Reload {
protected:
    static std::string lineOf(const std::string& appender, const std::string& directory) {
        return "zav-log: appender " + appender + ": Failed to open file " + directory + "/" + appender +
               ". Are you sure that the directory exists?\n";
    }

    const std::string missing_ = directory_ / "missing";
};

TEST_F(FailureNotices, TellOfAnAppenderThatBeginsToFail) {
    writeProperties(
        "appender.s = SimpleFileAppender\nappender.s.dir = DIR/missing\n"
        "appender.batch = SimpleFileAppender\nappender.batch.dir = DIR/missing\n"
        "appender.batch.asynchronous = true\nappender.batch.flush = batch\n"
        "appender.batch.level = ERROR\nappender.fine = SimpleFileAppender\nappender.fine.dir = DIR\n"
        "zav.log.AsynchronousDispatcher.waitingPeriod = 3600\n");
    StandardErrorCapture standardError;
    {
        const LogSession session(directory_ / "app.properties");
        Logger& net = LoggerFactory::getLogger("net");
        const auto logInRounds = [&net](const std::string& text) {
            for (int round = 0; round < 3; ++round) {
                net.error(text);
                net.warning(text);
                LogManager::flush();
            }
        };
        logInRounds("1");
        std::filesystem::create_directory(missing_);
        logInRounds("2");
        std::filesystem::remove_all(missing_);
        logInRounds("3");
        RecordingListener listener;
        LogManager::registerCommandListener("EXCEPTION", &listener);
        std::filesystem::create_directory(missing_);
        logInRounds("4");
        std::filesystem::remove_all(missing_);
        logInRounds("5");
        EXPECT_THAT(listener.arguments, SizeIs(9));
        LogManager::unregisterCommandListener("EXCEPTION");
        logInRounds("6"); // it was failing already
    }
    EXPECT_TRUE(LogManager::init(directory_ / "app.properties"));
    LoggerFactory::getLogger("net").error("7"); // without a session
    LogManager::flush();
    EXPECT_EQ(standardError.text(), lineOf("s", missing_) + lineOf("batch", missing_) +
                                        lineOf("s", missing_) + lineOf("batch", missing_));
}

// The storm

namespace {

constexpr int PRODUCERS = 4;
constexpr int LOGGERS = 2 * PRODUCERS;       ///< those of the producers, and those that an appender logs to
constexpr std::size_t MOST_MESSAGES = 5'000; ///< of each logger, for each change

/// How often each message of each logger has come to the appenders of either configuration.
class Arrivals {
public:
    using Counts = std::vector<std::atomic<std::uint8_t>>;

    explicit Arrivals(std::size_t messages) {
        for (Counts& counts : counts_) {
            counts = Counts(messages);
        }
    }

    /// \param place 0 or 1 for a synchronous appender of either, 2 or 3 for an asynchronous one
    void add(std::size_t place, const LogMessage& message) {
        const auto logger = static_cast<std::size_t>(message.getLoggerName().back() - '0');
        ++counts_[place * LOGGERS + logger][std::stoul(message.getText())];
    }

    int at(std::size_t place, std::size_t logger, std::size_t number) const {
        return counts_[place * LOGGERS + logger][number];
    }

    /// \return how many messages up to a number have not come to both appenders of one configuration alone
    std::size_t countWrong(std::size_t logger, std::size_t messages) const {
        std::size_t wrong = 0;
        for (std::size_t number = 0; number < messages; ++number) {
            const bool isInFirst = at(0, logger, number) == 1 && at(2, logger, number) == 1 &&
                                   at(1, logger, number) == 0 && at(3, logger, number) == 0;
            const bool isInSecond = at(1, logger, number) == 1 && at(3, logger, number) == 1 &&
                                    at(0, logger, number) == 0 && at(2, logger, number) == 0;
            wrong += isInFirst != isInSecond ? 0 : 1;
        }
        return wrong;
    }

private:
    std::array<Counts, std::size_t{4} * LOGGERS> counts_;
};

class ArrivalAppender : public Appender {
public:
    ArrivalAppender(const AppenderOptions& options, Arrivals& arrivals)
        : Appender(options), arrivals_(arrivals), place_(std::stoul(options.value("place"))) {}

private:
    void doOutput(const LogMessage& message) override { arrivals_.add(place_, message); }

    Arrivals& arrivals_;
    const std::size_t place_;
};

Logger& loggerOf(std::size_t number) {
    return LoggerFactory::getLogger("storm.logger" + std::to_string(number));
}

/// \return how many changes a storm has
int changesOfStorm() {
    const char* const wanted = std::getenv("ZAV_LOG_RELOADS"); // by scripts/nightly
    return wanted != nullptr ? std::stoi(wanted) : 100;
}

class ReloadStorm : public Reload {
protected:
    /// Two configurations whose appenders tell of each message, and one that writes the first logger's to a
    /// file, which is asynchronous in the second.
    static std::string configuration(int number) {
        const std::string place = std::to_string(number);
        const std::string sync = "appender.sync" + place;
        const std::string async = "appender.async" + place;
        const std::string numberOfFiles = number == 0 ? "3" : "4";
        std::string lines = sync + " = ArrivalAppender\n" + sync + ".place = " + place + "\n" + async +
                            " = ArrivalAppender\n" + async + ".asynchronous = true\n" + async +
                            ".place = " + std::to_string(number + 2) + "\n" +
                            "appender.file = SimpleFileAppender\nappender.file.dir = DIR\n"
                            "appender.file.filters = storm.logger0\n"
                            "appender.series = FileAppender\nappender.series.dir = DIR\n"
                            "appender.series.filters = storm.logger1\n"
                            "appender.series.fileNumber = " +
                            numberOfFiles + "\n" +
                            "zav.log.AsynchronousDispatcher.maxQueueSize = 1000\n"
                            "zav.log.AsynchronousDispatcher.overflow = block\n";
        return number == 0 ? lines : lines + "appender.file.asynchronous = true\n";
    }

    /// Logs from all producers until they are stopped.
    void produce(std::size_t producer) {
        Logger& logger = loggerOf(producer);
        std::size_t number = 0;
        for (; number < messagesAtMost_ && !isOver_; ++number) {
            logger.error(std::to_string(number));
        }
        messages_[producer] = number;
    }

    const int changes_ = changesOfStorm();
    const std::size_t messagesAtMost_ = MOST_MESSAGES * static_cast<std::size_t>(changes_);
    Arrivals arrivals_{messagesAtMost_};
    std::array<std::atomic<std::size_t>, LOGGERS> messages_{};
    std::atomic<bool> isOver_{false};
};

} // namespace

TEST_F(ReloadStorm, HasEachMessageInOneOfTheConfigurations) {
    LogManager::registerAppenderClass("ArrivalAppender", [this](const AppenderOptions& options) {
        return std::make_unique<ArrivalAppender>(options, arrivals_);
    });
    // Logs from inside what it gets, which is put off where it cannot be written at once.
    CallingAppender logging([this](const LogMessage& message) {
        const auto inner = static_cast<std::size_t>(message.getLoggerName().back() - '0') + PRODUCERS;
        if (inner < LOGGERS) {
            loggerOf(inner).error(std::to_string(messages_[inner]++));
        }
    });
    ASSERT_TRUE(init(configuration(0)));
    for (std::size_t logger = 0; logger < PRODUCERS; ++logger) {
        loggerOf(logger).addAppender(&logging);
    }
    std::vector<std::thread> producers;
    for (std::size_t producer = 0; producer < PRODUCERS; ++producer) {
        producers.emplace_back([this, producer] { produce(producer); });
    }
    for (int number = 1; number <= changes_; ++number) {
        change(configuration(number % 2));
    }
    isOver_ = true;
    for (std::thread& producer : producers) {
        producer.join();
    }
    ASSERT_TRUE(LogManager::flush());
    std::size_t total = 0;
    for (std::size_t logger = 0; logger < LOGGERS; ++logger) {
        EXPECT_EQ(arrivals_.countWrong(logger, messages_[logger]), 0U) << logger;
        total += messages_[logger];
    }
    const std::vector<std::string> inFile = lastWordsOf("file");
    EXPECT_THAT(inFile, SizeIs(messages_[0]));
    for (std::size_t number = 0; number < inFile.size(); ++number) {
        ASSERT_EQ(inFile[number], std::to_string(number));
    }
    const LogStatistics statistics = LogManager::statistics();
    EXPECT_EQ(statistics.queued, total);
    EXPECT_EQ(statistics.delivered, total);
    EXPECT_EQ(statistics.discarded + statistics.failed + statistics.waiting, 0U);
    for (std::size_t logger = 0; logger < PRODUCERS; ++logger) {
        loggerOf(logger).removeAppender(&logging);
    }
}
