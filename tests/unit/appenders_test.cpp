#include "TestClock.h"
#include "TestSupport.h"

#include "log/LogException.h"
#include "log/LogLine.h"
#include "log/appenders/AppenderFactory.h"
#include "log/appenders/AppenderRegistry.h"
#include "log/appenders/FileAppender.h"

#include <boost/make_shared.hpp>
#include <memory>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace ZAV::Util::TimeUtils;
using namespace testing;

namespace {

class CountingFilter : public MessageFilter {
public:
    explicit CountingFilter(bool answer) : answer_(answer) {}
    bool accept(const LogMessage&) override {
        ++asked;
        return answer_;
    }
    int asked = 0;

private:
    bool answer_;
};

using Settings = std::map<std::string, std::string>;

/// Builds the appender "x" with a builder from its settings.
template <typename Builder>
std::unique_ptr<Appender> build(const Settings& settings) {
    Util::Properties properties;
    for (const auto& [suffix, value] : settings) {
        properties["appender.x." + suffix] = value;
    }
    return std::unique_ptr<Appender>(DefaultAppenderFactory<Builder>().create(properties, "x"));
}

} // namespace

TEST(Appender, AsksItsFiltersInOrderUntilOneRejects) {
    const auto accepting = boost::make_shared<CountingFilter>(true);
    const auto rejecting = boost::make_shared<CountingFilter>(false);
    const auto unasked = boost::make_shared<CountingFilter>(true);
    RecordingAppender appender("x", true, {accepting, rejecting, unasked});
    appender.output(makeMessage("a"));
    EXPECT_EQ(accepting->asked, 1);
    EXPECT_EQ(rejecting->asked, 1);
    EXPECT_EQ(unasked->asked, 0);
    EXPECT_THAT(appender.texts, IsEmpty());
}

TEST(Appender, TakesListenersOfItsOwnNameAlong) {
    RecordingListener listener;
    LogManager::registerCommandListener("x", &listener);
    { const RecordingAppender appender("x"); }
    LogManager::command("x", "a");
    EXPECT_THAT(listener.arguments, IsEmpty());
}

TEST(StdoutAppender, WritesOneFlushedLineToTheChosenStream) {
    const std::pair<const char*, std::ostream*> streams[] = {
        {"cout", &std::cout}, {"cerr", &std::cerr}, {"clog", &std::clog}, {"CERR", &std::cout}};
    for (const auto& [name, stream] : streams) {
        const auto appender = build<StdoutAppenderBuilder>({{"ostream", name}});
        const LogMessage message = makeMessage("a");
        const StreamCapture capture(*stream);
        appender->output(message);
        EXPECT_EQ(capture.text(), formatLogLine(message) + "\n") << name;
    }
}

TEST(Escape, KeepsEveryMessageOnOneLineInAllClasses) {
    const Time time = Time::now();
    const LogMessage message("l\\\n", time, Level::INFO,
                             "a\nb\rc\td\x01\x7f\xc3\xa9\xc2\x9b\xe2\x80\xae\x9b\xe2\x80\x94\xc2", 1, "f\n",
                             LOG);
    const LogMessage escaped("l\\\\\\n", time, Level::INFO,
                             "a\\nb\\rc\\td\\x01\\x7f\xc3\xa9\\u{009b}\\u{202e}\x9b\xe2\x80\x94\xc2", 1,
                             "f\\n", LOG);
    const TemporaryDirectory directory;
    const Settings settings{{"escape", "true"}, {"dir", directory.path()}};
    const StreamCapture capture(std::cout);
    for (const LogMessage& output : {message, makeMessage("plain")}) {
        build<StdoutAppenderBuilder>(settings)->output(output);
        build<SimpleFileAppenderBuilder>(settings)->output(output);
    }
    build<FileAppenderBuilder>(settings)->output(message);
    EXPECT_THAT(capture.text(), StartsWith(formatLogLine(escaped) + "\n"));
    EXPECT_THAT(capture.text(), EndsWith(" plain\n"));
    EXPECT_EQ(readFile(directory / "x0"), formatLogLine(escaped) + "\n");
    EXPECT_THAT(readFile(directory / "x"), StartsWith(formatLogLineWithProcess(escaped) + "\n"));
    EXPECT_THAT(readFile(directory / "x"), EndsWith(" plain\n"));
}

TEST(SimpleFileAppender, AppendsAndRecoversWhenTheDirectoryAppears) {
    const TemporaryDirectory directory;
    RecordingListener listener;
    LogManager::registerCommandListener("EXCEPTION", &listener);
    const std::string file = directory / "inner/x";
    const auto appender = build<SimpleFileAppenderBuilder>({{"dir", directory / "inner"}});
    appender->output(makeMessage("lost"));
    EXPECT_THAT(listener.arguments,
                ElementsAre(StartsWith("LogException from doOutput(msg).\nException = Failed to open file " +
                                       file + ". Are you sure that the directory exists?\nMsg = ")));
    std::filesystem::create_directory(directory / "inner");
    writeFile(file, "kept\n");
    const LogMessage message = makeMessage("a");
    appender->output(message);
    EXPECT_EQ(readFile(file), "kept\n" + formatLogLineWithProcess(message) + "\n");
    std::filesystem::remove(file);
    appender->output(message);
    EXPECT_EQ(readFile(file), formatLogLineWithProcess(message) + "\n");
}

namespace {

/// A series of files named "f0", "f1" and so on.
class RotatingFiles : public Test {
protected:
    void SetUp() override { LogManager::registerCommandListener("EXCEPTION", &failures_); }

    std::unique_ptr<Appender> make(std::uint64_t fileNumber, std::uint64_t maxSize) {
        AppenderValues values("x");
        values.dir = directory_.path();
        values.file = "f";
        values.fileNumber = fileNumber;
        values.fileMaxSize = maxSize;
        values.fileMaxLifetime = Time();
        return std::make_unique<FileAppender>(values, Appender::Filters());
    }

    std::unique_ptr<Appender> configure(Settings settings) {
        settings.insert({{"dir", directory_.path()}, {"file", "f"}});
        return build<FileAppenderBuilder>(settings);
    }

    /// A message whose line has that many characters, not counting the line end.
    static LogMessage lineOfLength(std::size_t length) {
        const std::size_t rest = formatLogLine(makeMessage("")).size();
        return makeMessage(std::string(length - rest, 'x'));
    }

    std::string file(int index) const { return directory_ / ("f" + std::to_string(index)); }

    /// The lines' texts in a file, one character each.
    std::string texts(int index) const {
        std::istringstream lines(readFile(file(index)));
        std::string result;
        for (std::string line; std::getline(lines, line);) {
            result += line.back();
        }
        return result;
    }

    bool rotatedBy(Appender& appender, const LogMessage& message) const {
        const std::string before = readFile(file(0));
        appender.output(message);
        return readFile(file(0)).compare(0, before.size(), before) != 0;
    }

    const TemporaryDirectory directory_;
    RecordingListener failures_;
};

} // namespace

TEST_F(RotatingFiles, ShiftTheSeriesAndDropTheOldest) {
    for (const auto& [number, kept] : {std::pair("0", 1), {"2", 3}, {"15", 10}, {"x", 4}}) {
        auto appender = configure({{"fileNumber", number}, {"fileMaxSize", "1"}, {"fileMaxSizeUnit", "B"}});
        std::string expected;
        for (char text = 'a'; text < 'm'; ++text) {
            appender->output(makeMessage(std::string(1, text)));
            expected.insert(0, 1, text);
        }
        std::string found;
        for (int index = 0; index < kept; ++index) {
            found += texts(index);
        }
        EXPECT_EQ(found, expected.substr(0, found.size())) << number;
        appender.reset(); // some systems do not delete open files
        int files = 0;
        for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
            files += std::filesystem::remove(entry) ? 1 : 0;
        }
        EXPECT_EQ(files, kept) << number;
    }
}

TEST_F(RotatingFiles, CarryOnAfterAnEarlierRun) {
    writeFile(file(0), "0\n");
    writeFile(file(5), "5\n");
    writeFile(file(6), "beyond\n");
    writeFile(directory_ / "f", "no index\n");
    writeFile(directory_ / "f1x", "no index\n");
    writeFile(directory_ / "F4", "other case\n");
    std::filesystem::create_directory(file(2));
    const auto appender = make(5, 1000);
    appender->output(makeMessage("n"));
    EXPECT_EQ(texts(0), "n");
    EXPECT_EQ(texts(1), "0");
    EXPECT_FALSE(fileExists(file(5)));
    EXPECT_EQ(readFile(file(6)), "beyond\n");
    EXPECT_EQ(readFile(directory_ / "f1x"), "no index\n");
    EXPECT_EQ(readFile(directory_ / "F4"), "other case\n");
    EXPECT_TRUE(std::filesystem::is_directory(file(2)));
}

TEST_F(RotatingFiles, CheckTheSizeBeforeTheWriteWithOneByteForTheEndOfLine) {
    const std::size_t mega = std::size_t{1024} * 1024;
    const std::pair<Settings, std::size_t> limits[] = {
        {{{"fileMaxSize", "200"}, {"fileMaxSizeUnit", "B"}}, 200},
        {{{"fileMaxSize", "200 or so"}, {"fileMaxSizeUnit", "kb"}}, 200},
        {{{"fileMaxSize", "1"}, {"fileMaxSizeUnit", "KB"}}, 1024},
        {{{"fileMaxSize", "1"}, {"fileMaxSizeUnit", "MB"}}, mega},
        {{{"fileMaxSize", "1"}}, 10 * mega},
        {{{"fileMaxSize", "x"}, {"fileMaxSizeUnit", "B"}}, 10 * mega}};
    for (const auto& [settings, limit] : limits) {
        const auto appender = configure(settings);
        appender->output(lineOfLength(99));
        EXPECT_FALSE(rotatedBy(*appender, lineOfLength(limit - 101))) << limit;
        EXPECT_TRUE(rotatedBy(*appender, lineOfLength(50))) << limit;
    }
    const auto small = make(3, 200);
    small->output(lineOfLength(99));
    EXPECT_TRUE(rotatedBy(*small, lineOfLength(100)));
    EXPECT_TRUE(rotatedBy(*small, lineOfLength(1000))); // a long line gets a separate file
    for (const char* size : {"1", "17179869184"}) {     // the second does not fit into 64 bits, in bytes
        const auto large = configure({{"fileMaxSize", size}, {"fileMaxSizeUnit", "GB"}});
        large->output(lineOfLength(99));
        EXPECT_FALSE(rotatedBy(*large, lineOfLength(11 * mega))) << size;
    }
}

TEST_F(RotatingFiles, GrowOldWhenTheyHaveBeenOpenForTooLong) {
    const std::pair<Settings, Time> lifetimes[] = {
        {{}, Time(1, DAY)},
        {{{"fileMaxLifetime", "2"}}, Time(1, DAY)},
        {{{"fileMaxLifetime", "2"}, {"fileMaxLifetimeUnit", "d"}}, Time(2, DAY)},
        {{{"fileMaxLifetime", "2"}, {"fileMaxLifetimeUnit", "h"}}, Time(2, HOUR)},
        {{{"fileMaxLifetime", "2"}, {"fileMaxLifetimeUnit", "hours"}}, Time(2, MIN)}};
    for (const auto& [settings, lifetime] : lifetimes) {
        const auto appender = configure(settings);
        setClock(Time::now() + Time(10, DAY)); // the time when the file is opened counts
        appender->output(makeMessage("a"));
        const Time end = Time::now() + lifetime;
        setClock(end);
        EXPECT_FALSE(rotatedBy(*appender, makeMessage("b"))) << lifetime.microseconds();
        setClock(end + Time(1, MSEC));
        EXPECT_TRUE(rotatedBy(*appender, makeMessage("c"))) << lifetime.microseconds();
    }
    const auto ageless = configure({{"fileMaxLifetime", "-1"}, {"fileMaxLifetimeUnit", "h"}});
    ageless->output(makeMessage("a"));
    setClock(Time::now() + Time(1000, DAY));
    EXPECT_FALSE(rotatedBy(*ageless, makeMessage("b")));
}

TEST_F(RotatingFiles, StartAgainWhenTheDirectoryAppearsButNotAfterAFailedOpen) {
    const auto appender = configure({{"dir", directory_ / "inner"}});
    appender->output(makeMessage("lost"));
    ASSERT_THAT(failures_.arguments, SizeIs(1));
    EXPECT_THAT(failures_.arguments[0],
                HasSubstr("FindFirstFile returned -1 while trying to browse files by pattern " +
                          (directory_ / "inner/*") + "\n"));
    std::filesystem::create_directory(directory_ / "inner");
    appender->output(makeMessage("a"));
    EXPECT_THAT(readFile(directory_ / "inner/f0"), HasSubstr("INFO a\n"));

    std::filesystem::create_directory(file(0));
    const auto stuck = make(3, 1000);
    stuck->output(makeMessage("lost"));
    std::filesystem::remove(file(0));
    stuck->output(makeMessage("lost as well"));
    ASSERT_THAT(failures_.arguments, SizeIs(3));
    EXPECT_THAT(failures_.arguments[1], HasSubstr("Exception = Unable to open the file: " + file(0) + "\n"));
    EXPECT_THAT(failures_.arguments[2], HasSubstr("Exception = outputFileStream_.fail()\n"));
}

TEST_F(RotatingFiles, LeaveAFileInPlaceThatCannotBeMoved) {
    const auto appender = make(3, 1);
    appender->output(makeMessage("1"));
    writeFile(file(1), "foreign\n");
    appender->output(makeMessage("2"));
    EXPECT_EQ(readFile(file(1)), "foreign\n");
}

TEST(AppenderRegistry, TakesARefusedAppendersDynamicFilterOffTheBus) {
    const auto makeAppender = [] {
        return build<StdoutAppenderBuilder>({{"level", "INFO"}, {"expiration", "1"}}).release();
    };
    AppenderRegistry& registry = AppenderRegistry::instance();
    registry.registerAppender(makeAppender(), "StdoutAppender");
    EXPECT_EQ(textThrownBy<LogException>([&] { registry.registerAppender(makeAppender(), ""); }),
              "Appender x has already been registered.");
    const StreamCapture output(std::cout);
    // A destroyed filter would be called here, which the address sanitizer detects.
    LogManager::command("DynamicLogLevelFilterSoft", "DEBUG");
    LoggerFactory::getRootLogger().error("once", 0, "");
    EXPECT_EQ(output.text(), Time::now().toString() + " root ERROR once\n");
    LogManager::finish();
}
