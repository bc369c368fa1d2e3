// Linux-specific behaviour of a RollingFileAppender: changes to and from daylight-saving time, forked
// children.

#include "TestClock.h"
#include "TestSupport.h"
#include "TimeZone.h"

#include "log/LogLine.h"
#include "log/appenders/AppenderFactory.h"
#include "log/appenders/RollingFileAppender.h"

#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace ZAV::Util::TimeUtils;
using namespace testing;

namespace {

/// A time in UTC, for example "2027-03-28 00:59:59".
Time utc(const std::string& text) {
    std::tm time = {};
    EXPECT_NE(strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &time), nullptr);
    return Time(static_cast<std::uint64_t>(timegm(&time)), SEC);
}

std::string textOf(Time time) {
    const auto seconds = static_cast<std::time_t>(time.microseconds() / 1'000'000);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::gmtime(&seconds));
    return text;
}

std::unique_ptr<Appender> make(const std::string& directory, std::map<std::string, std::string> settings) {
    settings.insert({{"dir", directory}, {"file", "f"}});
    Util::Properties properties;
    for (const auto& [key, value] : settings) {
        properties["appender.x." + key] = value;
    }
    return std::unique_ptr<Appender>(
        DefaultAppenderFactory<RollingFileAppenderBuilder>().create(properties, "x"));
}

/// Sorted, with the live file last.
std::vector<std::string> filesIn(const std::string& directory) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    std::rotate(names.begin(), std::find(names.begin(), names.end(), "f") + 1, names.end());
    return names;
}

} // namespace

TEST(RollMoments, AreThoseOfTheZone) {
    struct Case {
        const char* zone;
        RollMoment moment;
        const char* time;
        std::vector<const char*> next;
    };
    const Case cases[] = {// An hour is left out, another one comes twice.
                          {"Europe/Berlin",
                           RollMoment::HOUR,
                           "2027-03-28 00:30:00",
                           {"2027-03-28 01:00:00", "2027-03-28 02:00:00"}},
                          {"Europe/Berlin",
                           RollMoment::HOUR,
                           "2027-10-30 23:59:59",
                           {"2027-10-31 00:00:00", "2027-10-31 01:00:00", "2027-10-31 02:00:00"}},
                          {"Europe/Berlin",
                           RollMoment::MIDNIGHT,
                           "2027-03-27 12:00:00",
                           {"2027-03-27 23:00:00", "2027-03-28 22:00:00", "2027-03-29 22:00:00"}},
                          {"Europe/Berlin",
                           RollMoment::MIDNIGHT,
                           "2027-10-30 12:00:00",
                           {"2027-10-30 22:00:00", "2027-10-31 23:00:00"}},
                          {"Asia/Kolkata", RollMoment::HOUR, "2027-05-01 12:00:00", {"2027-05-01 12:30:00"}},
                          // Half an hour occurs twice, and is skipped.
                          {"Australia/Lord_Howe",
                           RollMoment::HOUR,
                           "2027-04-03 14:10:00",
                           {"2027-04-03 15:00:00", "2027-04-03 15:30:00", "2027-04-03 16:30:00"}},
                          {"Australia/Lord_Howe",
                           RollMoment::HOUR,
                           "2027-10-02 14:40:00",
                           {"2027-10-02 15:30:00", "2027-10-02 16:00:00"}},
                          // Midnight occurs twice, is skipped, and is shifted.
                          {"America/Havana",
                           RollMoment::MIDNIGHT,
                           "2027-11-06 12:00:00",
                           {"2027-11-07 04:00:00", "2027-11-08 05:00:00"}},
                          {"America/Havana",
                           RollMoment::MIDNIGHT,
                           "2027-03-13 12:00:00",
                           {"2027-03-14 05:00:00", "2027-03-15 04:00:00"}},
                          {"America/Sao_Paulo",
                           RollMoment::MIDNIGHT,
                           "2018-02-17 12:00:00",
                           {"2018-02-18 03:00:00", "2018-02-19 03:00:00"}}};
    for (const Case& one : cases) {
        setTimeZone(one.zone);
        Time time = utc(one.time);
        for (const char* const next : one.next) {
            const RollPeriod period(one.moment, time);
            EXPECT_EQ(textOf(period.end), next) << one.zone << ' ' << one.time;
            EXPECT_FALSE(period.isFarBehind(time) || period.endsBefore(time));
            time = period.end;
        }
    }
}

/// A year of hours with restarts: each line occurs once and in order, in the file of its hour or day.
TEST(RolledYear, HasAFileForEachHourOrDay) {
    setTimeZone("Europe/Berlin");
    for (const auto& [rollAt, files] : {std::pair("hour", 24 * 365), {"midnight", 365}}) {
        const TemporaryDirectory directory;
        const std::string live = directory / "f";
        std::unique_ptr<Appender> appender;
        std::string expected;
        const Time begin = utc("2026-12-31 23:00:00");
        for (int hour = 0; hour < 24 * 365; ++hour) {
            if (hour % 50 == 0) { // an earlier run wrote the last line; only the file tells when
                const auto written = static_cast<std::time_t>(Time::now().microseconds() / 1'000'000);
                const timespec times[] = {{written, 0}, {written, 0}};
                utimensat(AT_FDCWD, live.c_str(), times, 0);
                appender = make(directory.path(), {{"rollAt", rollAt}});
            }
            for (const unsigned second : {0U, 3599U}) {
                setClock(begin + Time(static_cast<std::uint64_t>(hour) * 3600 + second, SEC));
                appender->output(makeMessage("line"));
                expected += formatLogLine(makeMessage("line")) + "\n";
            }
        }
        const std::vector<std::string> names = filesIn(directory.path());
        EXPECT_EQ(names.size(), static_cast<std::size_t>(files));
        std::string content;
        for (const std::string& name : names) {
            content += readFile(directory / name);
        }
        EXPECT_TRUE(content == expected) << rollAt;
    }
}

TEST(RolledYear, ALineThatComesLateAndAClockThatWasWrongRollNothing) {
    setTimeZone("Europe/Berlin");
    const TemporaryDirectory directory;
    const auto appender = make(directory.path(), {{"rollAt", "hour"}});
    const auto writtenAt = [&](const char* time) {
        setClock(utc(time));
        appender->output(makeMessage("line"));
        return filesIn(directory.path()).size();
    };
    EXPECT_EQ(writtenAt("2027-01-15 12:59:59"), 1U);
    EXPECT_EQ(writtenAt("2027-01-15 13:00:00"), 2U);
    EXPECT_EQ(writtenAt("2027-01-15 12:59:58"), 2U); // from a slow thread
    EXPECT_EQ(writtenAt("2027-01-15 13:59:59"), 2U);
    EXPECT_EQ(writtenAt("2099-01-15 13:59:59"), 3U);
    EXPECT_EQ(writtenAt("2027-01-15 14:10:00"), 3U); // the clock is right again
    EXPECT_EQ(writtenAt("2027-01-15 15:10:00"), 4U);
}

TEST(RollingFile, ThatCannotBeRenamedGoesOnGrowing) {
    AwaitedCommand report;
    LogManager::registerCommandListener("EXCEPTION", &report);
    const TemporaryDirectory directory;
    const std::string name(250, 'f'); // leaves no room for the timestamp
    const auto appender = make(directory.path(), {{"file", name}, {"rollSize", "1 B"}});
    std::string expected;
    for (const char* const text : {"a", "b", "c"}) {
        appender->output(makeMessage(text));
        expected += formatLogLine(makeMessage(text)) + "\n";
    }
    EXPECT_EQ(report.await(),
              "LogException from packing.\nException = Unable to rename the file: " + (directory / name));
    EXPECT_EQ(readFile(directory / name), expected);
}

TEST(RollingFile, ThatIsALinkIsRolledByItsName) {
    RecordingListener failures;
    LogManager::registerCommandListener("EXCEPTION", &failures);
    const TemporaryDirectory directory;
    const TemporaryDirectory elsewhere;
    writeFile(elsewhere / "target", "");
    std::filesystem::create_symlink(elsewhere / "target", directory / "f");
    auto appender = make(directory.path(), {{"rollSize", "1 B"}, {"compress", "gzip"}, {"keepFiles", "1"}});
    for (const char* const text : {"a", "b", "c"}) {
        appender->output(makeMessage(text));
    }
    const std::vector<std::string> names = filesIn(directory.path());
    ASSERT_THAT(names, SizeIs(2));
    appender.reset(); // nothing is being compressed any more
    EXPECT_EQ(readFile(directory / names[0]), formatLogLine(makeMessage("b")) + "\n");
    EXPECT_EQ(readFile(directory / "f"), formatLogLine(makeMessage("c")) + "\n");
    EXPECT_EQ(readFile(elsewhere / "target"),
              formatLogLine(makeMessage("a")) + "\n"); // only the link is deleted
    EXPECT_THAT(failures.arguments, IsEmpty());
}

namespace {

class RollingFork : public Test {
protected:
    std::string content(const std::string& name) const { return readFile(directory_ / name); }
    static std::string line(const std::string& text) { return formatLogLine(makeMessage(text)) + "\n"; }

    const TemporaryDirectory directory_;
    int toChild_[2] = {};
    int toParent_[2] = {};

    void SetUp() override { ASSERT_EQ(pipe(toChild_) + pipe(toParent_), 0); }

    static bool await(const int* ends) {
        char byte = 0;
        return read(ends[0], &byte, 1) == 1;
    }
    static void expectSuccessOf(pid_t child) {
        int status = 1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    static bool tell(const int* ends) { return ::write(ends[1], "x", 1) == 1; }
};

} // namespace

TEST_F(RollingFork, AChildFollowsTheLiveFileAndItsParentsFilesAreItsParentsToRollAndToPack) {
    auto appender = make(directory_.path(), {{"rollSize", "1 B"}, {"compress", "gzip"}});
    appender->output(makeMessage("a"));
    const pid_t child = fork();
    if (child == 0) {
        appender->output(makeMessage("inherited"));
        bool isWell = tell(toParent_) && await(toChild_);
        appender->output(makeMessage("followed"));
        make(directory_.path(), {{"rollSize", "1 B"}, {"compress", "gzip"}, {"keepFiles", "1"}})
            ->output(makeMessage("made"));
        isWell = isWell && tell(toParent_) && await(toChild_);
        _exit(isWell ? 0 : 1);
    }
    ASSERT_TRUE(await(toParent_));
    appender->output(makeMessage("b"));
    ASSERT_TRUE(tell(toChild_) && await(toParent_));
    const std::vector<std::string> names = filesIn(directory_.path());
    ASSERT_THAT(names, SizeIs(2));
    EXPECT_EQ(content(names[0]), line("a") + line("inherited"));
    EXPECT_EQ(content("f"), line("b") + line("followed") + line("made"));
    while (!fileExists(directory_ / (names[0] + ".gz")) || fileExists(directory_ / names[0])) {
        std::this_thread::yield();
    }
    ASSERT_TRUE(tell(toChild_));
    expectSuccessOf(child);
}

TEST_F(RollingFork, AChildTakesOverWhenItsParentIsThrough) {
    auto appender = make(directory_.path(), {{"rollSize", "1 B"}});
    appender->output(makeMessage("a"));
    const pid_t child = fork();
    if (child == 0) {
        const bool isWell = await(toChild_);
        appender->output(makeMessage("b"));
        appender->output(makeMessage("c"));
        _exit(isWell ? 0 : 1);
    }
    appender.reset();
    ASSERT_TRUE(tell(toChild_));
    expectSuccessOf(child);
    const std::vector<std::string> names = filesIn(directory_.path());
    ASSERT_THAT(names, SizeIs(3));
    EXPECT_EQ(content(names[0]) + content(names[1]) + content("f"), line("a") + line("b") + line("c"));
}

/// As in a program that becomes a daemon after it has begun to log.
TEST_F(RollingFork, AChildThatTakesOverPacksWhatItsParentHasLeft) {
    auto appender = make(directory_.path(), {{"rollSize", "1 MB"}, {"compress", "gzip"}});
    appender->output(makeMessage("a"));
    const std::string left = directory_ / "f.20260101T000000Z";
    writeFile(left, "rolled by the parent\n");
    const pid_t child = fork();
    if (child == 0) {
        const bool isWell = await(toChild_);
        appender->output(makeMessage("b"));
        while (fileExists(left) || !fileExists(left + ".gz")) { // a hang here is a failure
            std::this_thread::yield();
        }
        _exit(isWell ? 0 : 1);
    }
    appender.reset();
    ASSERT_TRUE(tell(toChild_));
    expectSuccessOf(child);
}

/// As in a server all of whose processes reload their configuration.
TEST_F(RollingFork, ProcessesThatComeToAFileOnlyAfterTheForkHaveItInCommon) {
    const std::string limit = std::to_string(line("a").size() * 2) + " B";
    const pid_t child = fork();
    if (child == 0) {
        bool isWell = await(toChild_);
        const auto appender = make(directory_.path(), {{"rollSize", "1 B"}});
        appender->output(makeMessage("b")); // the first process must notice this
        isWell = isWell && tell(toParent_) && await(toChild_);
        appender->output(makeMessage("d"));
        _exit(isWell ? 0 : 1);
    }
    const auto appender = make(directory_.path(), {{"rollSize", limit}});
    appender->output(makeMessage("a"));
    ASSERT_TRUE(tell(toChild_) && await(toParent_));
    EXPECT_EQ(content("f"), line("a") + line("b"));
    appender->output(makeMessage("c"));
    ASSERT_TRUE(tell(toChild_));
    expectSuccessOf(child);
    const std::vector<std::string> names = filesIn(directory_.path());
    ASSERT_THAT(names, SizeIs(2));
    EXPECT_EQ(content(names[0]) + "," + content("f"), line("a") + line("b") + "," + line("c") + line("d"));
}

/// Related processes share only the files that both of them write.
TEST_F(RollingFork, AChildRollsFilesOfItsOwnWhileItsParentRollsOthers) {
    const TemporaryDirectory childs;
    const auto appender = make(directory_.path(), {{"rollSize", "1 B"}});
    appender->output(makeMessage("a"));
    const pid_t child = fork();
    if (child == 0) {
        const auto own = make(childs.path(), {{"rollSize", "1 B"}});
        own->output(makeMessage("b"));
        own->output(makeMessage("c"));
        _exit(0);
    }
    expectSuccessOf(child);
    EXPECT_THAT(filesIn(childs.path()), SizeIs(2));
    EXPECT_EQ(readFile(childs / "f"), line("c"));
}

TEST_F(RollingFork, AListenerThatForksInTheThreadThatPacksLeavesNothingOfItInTheChild) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers do not follow forks of a process with threads";
#endif
    class ForkingListener : public CommandListener {
    public:
        void onCommand(const std::string&) override {
            if (!hasForked_) {
                hasForked_ = true;
                child.set_value(fork()); // the child continues in this thread, and ends with it
            }
        }
        std::promise<pid_t> child;

    private:
        bool hasForked_ = false;
    };
    setClock(Time(1'800'014'400, SEC)); // 2027
    ForkingListener listener;
    LogManager::registerCommandListener("EXCEPTION", &listener);
    const auto appender = make(directory_.path(), {{"keepFiles", "1"}});
    for (const char* const name : {"f.20260101T000000Z", "f.20260102T000000Z"}) {
        writeFile(directory_ / name, "a\n");
        std::filesystem::create_directory(directory_ / (name + std::string(".gz"))); // cannot be deleted
    }
    appender->output(makeMessage("a"));
    expectSuccessOf(listener.child.get_future().get());
}
