#include "TestSupport.h"

#include "log/LogException.h"
#include "log/LogLine.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "log/appenders/AppenderRegistry.h"
#include "log/appenders/DefaultAppenderFactory.h"
#include "log/appenders/FileAppender.h"
#include "log/appenders/FileAppenderBuilder.h"
#include "log/appenders/SimpleFileAppenderBuilder.h"
#include "log/appenders/StdoutAppenderBuilder.h"
#include "zav-util/Properties.h"
#include "zav-util/UtilException.h"

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <memory>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using TestSupport::makeMessage;
using TestSupport::readFile;
using TestSupport::RecordingAppender;
using TestSupport::RecordingListener;

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

class FailingAppender : public Appender {
public:
    using Appender::Appender;

protected:
    void doOutput(const LogMessage& message) override {
        if (message.getText() == "log") {
            throw LogException("disk full");
        }
        throw std::runtime_error("unseen text");
    }
};

std::unique_ptr<Appender> create(AbstractAppenderFactory&& factory, const Util::Properties& properties) {
    return std::unique_ptr<Appender>(factory.create(properties, "x"));
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

TEST(Appender, ReportsItsFailuresAsCommands) {
    RecordingListener listener;
    LogManager::registerCommandListener("EXCEPTION", &listener);
    FailingAppender appender("failing");
    const LogMessage log = makeMessage("log");
    const LogMessage other = makeMessage("other");
    appender.output(log);
    appender.output(other);
    EXPECT_THAT(
        listener.arguments,
        ElementsAre("LogException from doOutput(msg).\nException = disk full\nMsg = " + formatLogLine(log),
                    "Unknown exception from doOutput(msg).\nMsg = " + formatLogLine(other)));
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
    for (const auto& stream : streams) {
        Util::Properties properties;
        properties["appender.x.ostream"] = stream.first;
        const auto appender = create(DefaultAppenderFactory<StdoutAppenderBuilder>(), properties);
        const LogMessage message = makeMessage("a");
        const TestSupport::StreamCapture capture(*stream.second);
        appender->output(message);
        EXPECT_EQ(capture.text(), formatLogLine(message) + "\n") << stream.first;
    }
}

TEST(SimpleFileAppender, AppendsAndRecoversWhenTheDirectoryAppears) {
    const TestSupport::TemporaryDirectory directory;
    RecordingListener listener;
    LogManager::registerCommandListener("EXCEPTION", &listener);
    Util::Properties properties;
    properties["appender.x.dir"] = directory / "inner";
    const auto appender = create(DefaultAppenderFactory<SimpleFileAppenderBuilder>(), properties);
    appender->output(makeMessage("lost"));
    ASSERT_THAT(listener.arguments, SizeIs(1));
    EXPECT_THAT(listener.arguments[0],
                StartsWith("LogException from doOutput(msg).\nException = Failed to open file " +
                           (directory / "inner/x") + ". Are you sure that the directory exists?\nMsg = "));
    std::filesystem::create_directory(directory / "inner");
    TestSupport::writeFile(directory / "inner/x", "kept\n");
    const LogMessage message = makeMessage("a");
    appender->output(message);
    EXPECT_EQ(readFile(directory / "inner/x"), "kept\n" + formatLogLineWithProcess(message) + "\n");
    std::filesystem::remove(directory / "inner/x");
    appender->output(message);
    EXPECT_EQ(readFile(directory / "inner/x"), formatLogLineWithProcess(message) + "\n");
}

namespace {

/// A series of files named "f0", "f1" and so on.
class RotatingFiles : public testing::Test {
protected:
    void SetUp() override { LogManager::registerCommandListener("EXCEPTION", &failures_); }

    std::unique_ptr<Appender> make(std::uint64_t fileNumber, std::uint64_t maxSize,
                                   Time maxLifetime = Time()) {
        return std::make_unique<FileAppender>("x", true, Appender::Filters(), directory_.path(), "f",
                                              fileNumber, maxSize, maxLifetime);
    }

    std::unique_ptr<Appender> configure(const Util::Properties& settings) {
        Util::Properties properties;
        properties["appender.x.dir"] = directory_.path();
        properties["appender.x.file"] = "f";
        for (const auto& setting : settings) {
            properties["appender.x." + setting.first] = setting.second;
        }
        return create(DefaultAppenderFactory<FileAppenderBuilder>(), properties);
    }

    static Util::Properties settings(std::initializer_list<std::pair<const std::string, std::string>> list) {
        Util::Properties properties;
        properties.insert(list);
        return properties;
    }

    /// A message whose line has that many characters, without its end of line.
    static LogMessage lineOfLength(std::size_t length) {
        const std::size_t rest = formatLogLine(makeMessage("")).size();
        return makeMessage(std::string(length - rest, 'x'));
    }

    std::string file(int index) const { return directory_ / ("f" + std::to_string(index)); }

    /// The texts of the lines in a file, one character each.
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

    const TestSupport::TemporaryDirectory directory_;
    RecordingListener failures_;
};

} // namespace

TEST_F(RotatingFiles, ShiftTheSeriesAndDropTheOldest) {
    const auto appender = make(2, 1);
    for (const char* text : {"1", "2", "3", "4"}) {
        appender->output(makeMessage(text));
    }
    EXPECT_EQ(texts(0) + texts(1) + texts(2), "432");
    EXPECT_FALSE(TestSupport::fileExists(file(3)));
}

TEST_F(RotatingFiles, CarryOnAfterAnEarlierRun) {
    TestSupport::writeFile(file(0), "0\n");
    TestSupport::writeFile(file(5), "5\n");
    TestSupport::writeFile(file(6), "beyond\n");
    TestSupport::writeFile(directory_ / "f", "no index\n");
    TestSupport::writeFile(directory_ / "f1x", "no index\n");
    TestSupport::writeFile(directory_ / "F4", "other case\n");
    std::filesystem::create_directory(file(2));
    const auto appender = make(5, 1000);
    appender->output(makeMessage("n"));
    EXPECT_EQ(texts(0), "n");
    EXPECT_EQ(texts(1), "0");
    EXPECT_FALSE(TestSupport::fileExists(file(5)));
    EXPECT_EQ(readFile(file(6)), "beyond\n");
    EXPECT_EQ(readFile(directory_ / "f1x"), "no index\n");
    EXPECT_EQ(readFile(directory_ / "F4"), "other case\n");
    EXPECT_TRUE(std::filesystem::is_directory(file(2)));
}

TEST_F(RotatingFiles, OnlyTheLiveFileWithNumberZeroAndAtMostTen) {
    auto one = make(0, 1);
    one->output(makeMessage("1"));
    one->output(makeMessage("2"));
    EXPECT_EQ(texts(0), "2");
    EXPECT_FALSE(TestSupport::fileExists(file(1)));
    one.reset(); // some systems rename no file that is open
    const auto ten = make(15, 1);
    for (int i = 0; i < 12; ++i) {
        ten->output(makeMessage("t"));
    }
    EXPECT_EQ(texts(9), "t");
    EXPECT_FALSE(TestSupport::fileExists(directory_ / "f:"));
}

TEST_F(RotatingFiles, CheckTheSizeBeforeTheWriteWithOneByteForTheEndOfLine) {
    const auto appender = configure(settings({{"fileMaxSize", "1"}, {"fileMaxSizeUnit", "KB"}}));
    appender->output(lineOfLength(899));
    EXPECT_FALSE(rotatedBy(*appender, lineOfLength(123))); // 900 + 124 bytes fill the file exactly
    EXPECT_TRUE(rotatedBy(*appender, lineOfLength(2000))); // a long line gets a file of its own
    EXPECT_TRUE(rotatedBy(*appender, lineOfLength(899)));
    EXPECT_TRUE(rotatedBy(*appender, lineOfLength(124)));
}

TEST_F(RotatingFiles, GrowOldOnlyWhenALifetimeIsSet) {
    const Time past(static_cast<std::uint64_t>(-1), HOUR); // ends before it began
    const auto aging = make(3, 100000, past);
    aging->output(makeMessage("a"));
    EXPECT_TRUE(rotatedBy(*aging, makeMessage("b")));
    const auto lasting = configure(settings({{"fileMaxLifetime", "-1"}, {"fileMaxLifetimeUnit", "h"}}));
    lasting->output(makeMessage("c"));
    EXPECT_FALSE(rotatedBy(*lasting, makeMessage("d")));
}

TEST_F(RotatingFiles, TakeSizeAndUnitAsAPair) {
    const auto alone = configure(settings({{"fileMaxSize", "1"}}));
    alone->output(makeMessage("a"));
    EXPECT_FALSE(rotatedBy(*alone, makeMessage("b")));
    const auto noNumber =
        configure(settings({{"fileMaxSize", "x"}, {"fileMaxSizeUnit", "B"}, {"fileNumber", "x"}}));
    noNumber->output(makeMessage("c"));
    EXPECT_FALSE(rotatedBy(*noNumber, makeMessage("d")));
    const auto unknownUnit = configure(settings({{"fileMaxSize", "1 or so"}, {"fileMaxSizeUnit", "kb"}}));
    unknownUnit->output(makeMessage("e"));
    EXPECT_TRUE(rotatedBy(*unknownUnit, makeMessage("f")));
}

TEST_F(RotatingFiles, StartAgainWhenTheDirectoryAppearsButNotAfterAFailedOpen) {
    const auto appender = configure(settings({{"dir", directory_ / "inner"}}));
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
    TestSupport::writeFile(file(1), "foreign\n");
    appender->output(makeMessage("2"));
    EXPECT_EQ(readFile(file(1)), "foreign\n");
}

namespace {

/// Keeps what reaches standard output while it lives, and takes the library down.
class Configured : public testing::Test {
protected:
    ~Configured() override { LogManager::finish(); }

    std::string initFailure() {
        return TestSupport::textThrownBy<LogException>([this] { LogManager::init(properties_); });
    }

    Util::Properties properties_;
    TestSupport::StreamCapture output_{std::cout};
};

} // namespace

TEST_F(Configured, AppenderWritesWhatItsFiltersLetThrough) {
    properties_["logger.root.level"] = "DEBUG";
    properties_["appender.console"] = "StdoutAppender";
    properties_["appender.console.filters"] = "net";
    properties_["appender.console.level"] = "INFO";
    properties_["appender.console.message_type"] = "LOG";
    properties_["appender.other.level"] = "DEBUG"; // declares nothing
    properties_["appender.x.y"] = "StdoutAppender";
    EXPECT_TRUE(LogManager::init(properties_));
    EXPECT_FALSE(LogManager::init(Util::Properties()));
    LoggerFactory::getLogger("net").info("seen", 0, "");
    LoggerFactory::getLogger("net").debug("level", 0, "");
    LoggerFactory::getLogger("db").info("logger", 0, "");
    EXPECT_THAT(output_.text(), HasSubstr(" net INFO seen\n"));
    EXPECT_EQ(output_.text().find('\n'), output_.text().size() - 1);
    LogManager::finish();
    LoggerFactory::getLogger("net").info("after finish", 0, "");
    EXPECT_THAT(output_.text(), Not(HasSubstr("after finish")));
    EXPECT_TRUE(LogManager::init(properties_));
}

TEST_F(Configured, BadDeclarationsAreRefusedAndALaterInitSucceeds) {
    TestSupport::RecordingListener listener;
    LogManager::registerCommandListener("X", &listener);
    properties_["appender.x"] = "Stdout";
    EXPECT_EQ(initFailure(), "No factory registered for appenderName = x, appenderClass = Stdout");
    LogManager::command("X", "a");
    EXPECT_TRUE(listener.arguments.empty());
    properties_["appender.x"] = "StdoutAppender";
    properties_["appender..x"] = "FileAppender";
    EXPECT_EQ(initFailure(), "Appender x has already been registered.");
    properties_.erase("appender.x");
    EXPECT_EQ(initFailure(), "No factory registered for appenderName = x, appenderClass = ");
    properties_.erase("appender..x");
    EXPECT_TRUE(LogManager::init(properties_));
}

TEST_F(Configured, ARejectedAppendersDynamicFilterIsOffTheBus) {
    AppenderRegistry& registry = AppenderRegistry::instance();
    properties_["appender.x.level"] = "INFO";
    properties_["appender.x.expiration"] = "1";
    StdoutAppenderBuilder first("x");
    registry.registerAppender(first.configure(properties_).build());
    Appender* duplicate = nullptr;
    {
        StdoutAppenderBuilder second("x");
        duplicate = second.configure(properties_).build();
    }
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([&] { registry.registerAppender(duplicate); }),
              "Appender x has already been registered.");
    // A filter that is gone would be called here, which the address sanitizer sees.
    LogManager::command("DynamicLogLevelFilterSoft", "DEBUG");
    LoggerFactory::getRootLogger().error("once", 0, "");
    EXPECT_THAT(output_.text(), HasSubstr(" root ERROR once\n"));
}

TEST_F(Configured, ACommandLowersEveryDynamicFilter) {
    for (const std::string name : {"a", "b"}) {
        properties_["appender." + name] = "StdoutAppender";
        properties_["appender." + name + ".level"] = "WARNING";
        properties_["appender." + name + ".expiration"] = "1 hour";
    }
    LogManager::init(properties_);
    Logger& logger = LoggerFactory::getLogger("net");
    logger.setLevel(Level::DEBUG, false);
    logger.debug("unseen", 0, "");
    EXPECT_EQ(output_.text(), "");
    logger.setLevel(Level::DEBUG, true);
    logger.debug("seen", 0, "");
    const std::string text = output_.text();
    EXPECT_NE(text.find("seen"), text.rfind("seen"));
}

TEST_F(Configured, FileNamesAreChecked) {
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([] { LogManager::init(""); }),
              "File name parameter is empty.");
    EXPECT_TRUE(LogManager::init(properties_));
    EXPECT_THAT(TestSupport::textThrownBy<Util::UtilException>([] { LogManager::init("no such file"); }),
                StartsWith("Unable to open file: no such file from "));
}
