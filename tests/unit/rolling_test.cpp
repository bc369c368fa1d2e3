// Behaviour of a RollingFileAppender on every system.

#include "TestClock.h"
#include "TestSupport.h"

#include "log/LogException.h"
#include "log/LogLine.h"
#include "log/appenders/AppenderFactory.h"
#include "log/appenders/Packer.h"
#include "log/appenders/RollingFileAppender.h"
#include "platform/OpenFiles.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <thread>
#include <zlib.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace ZAV::Util::TimeUtils;
using namespace testing;

namespace {

class RolledSeries : public Test {
protected:
    using Settings = std::map<std::string, std::string>;

    void SetUp() override { LogManager::registerCommandListener("EXCEPTION", &failures_); }

    std::unique_ptr<Appender> make(Settings settings) const {
        settings.insert({{"dir", directory_.path()}, {"file", "f"}});
        Util::Properties properties;
        for (const auto& [key, value] : settings) {
            properties["appender.x." + key] = value;
        }
        return std::unique_ptr<Appender>(
            DefaultAppenderFactory<RollingFileAppenderBuilder>().create(properties, "x"));
    }

    /// An appender that rolls before each further line.
    std::unique_ptr<Appender> makeRollingAlways(Settings settings = {}) const {
        settings["rollSize"] = "1 B";
        return make(settings);
    }

    /// The names of the folder's files after "f.", sorted.
    std::vector<std::string> suffixes() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
            const std::string name = entry.path().filename().string();
            if (name != "f") {
                found.push_back(name.substr(2));
            }
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    std::string file(const std::string& suffix) const { return directory_ / ("f." + suffix); }

    /// The texts of the lines in a file, one character each.
    static std::string textsIn(const std::string& content) {
        std::istringstream lines(content);
        std::string result;
        for (std::string line; std::getline(lines, line);) {
            line.erase(std::min(line.find('\r'), line.size()));
            result += line.back();
        }
        return result;
    }

    std::string texts(const std::string& suffix) const { return textsIn(readFile(file(suffix))); }
    std::string liveTexts() const { return textsIn(readFile(directory_ / "f")); }

    std::string unpacked(const std::string& suffix) const {
        const gzFile packed = gzopen(file(suffix).c_str(), "rb");
        char content[4096];
        const int size = gzread(packed, content, sizeof content);
        gzclose(packed);
        return std::string(content, static_cast<std::size_t>(std::max(size, 0)));
    }

    template <typename Condition>
    static void await(Condition condition) {
        while (!condition()) {
            std::this_thread::yield();
        }
    }

    bool isPacked(const std::string& suffix) const {
        return !fileExists(file(suffix)) && fileExists(file(suffix + ".gz"));
    }

    static void write(Appender& appender, const std::string& texts) {
        for (const char text : texts) {
            appender.output(makeMessage(std::string(1, text)));
        }
    }

    /// Takes long to compress.
    static std::string noise() {
        std::string content(std::size_t{16} * 1024 * 1024, '\0');
        std::mt19937 random(1);
        for (char& byte : content) {
            byte = static_cast<char>(random());
        }
        return content;
    }

    const TemporaryDirectory directory_;
    RecordingListener failures_;
};

const Time NOON(1'800'014'400, SEC); // 2027-01-15 12:00:00 UTC
const std::string AT_NOON = "20270115T120000Z";

} // namespace

TEST_F(RolledSeries, BeginsAFileBeforeALineWouldMakeTheOldOneTooLarge) {
    setClock(NOON);
    const std::size_t size = formatLogLine(makeMessage("a")).size() + 1;
    writeFile(directory_ / "f", std::string(size - 1, 'o') + "\n"); // from an earlier run
    const auto appender = make({{"rollSize", std::to_string(3 * size) + " B"}});
    write(*appender, "ab");
    EXPECT_EQ(liveTexts(), "oab");
    EXPECT_THAT(suffixes(), IsEmpty());
    write(*appender, "c");
    EXPECT_EQ(texts(AT_NOON), "oab");
    EXPECT_EQ(liveTexts(), "c");
    appender->output(makeMessage(std::string(4 * size, 'x'))); // gets a separate file
    write(*appender, "d");
    EXPECT_THAT(suffixes(), ElementsAre(AT_NOON, AT_NOON + "-1", AT_NOON + "-2"));
    EXPECT_EQ(texts(AT_NOON + "-2") + liveTexts(), "xd");
}

TEST_F(RolledSeries, NamesAreGivenForGoodAndInTheOrderOfTheFiles) {
    setClock(NOON);
    writeFile(file(AT_NOON + "-9"), "earlier run\n");
    writeFile(file("20270115T120007Z-1.gz"), "packed\n");
    for (const char* other : {"20270115T120009Z-0", "20270115T120009Z-01", "20270115T120009Z.gz.part",
                              "20270115T120009Z-1.bz2", "2027-1-15T120009Z", "20271301T000000Z",
                              "20270229T000000Z", "20270115T126000Z", "99990101T000000Z"}) {
        writeFile(file(other), "is no member\n");
    }
    auto appender = makeRollingAlways();
    write(*appender, "abc");
    EXPECT_EQ(texts("20270115T120007Z-2") + texts("20270115T120007Z-3"), "ab");
    setClock(NOON + Time(10, SEC));
    write(*appender, "d");
    EXPECT_EQ(texts("20270115T120010Z"), "c");
    setClock(NOON); // as if the clock was set back
    write(*appender, "e");
    appender = makeRollingAlways();
    write(*appender, "f");
    EXPECT_EQ(texts("20270115T120010Z-1") + texts("20270115T120010Z-2") + liveTexts(), "def");
    setClock(NOON + Time(20, SEC));
    writeFile(file("20270115T120020Z"), "by another process\n"); // which the appender has not looked for
    write(*appender, "g");
    EXPECT_EQ(texts("20270115T120020Z-1") + liveTexts(), "fg");
    EXPECT_EQ(readFile(file("20270115T120007Z-1.gz")), "packed\n");
    EXPECT_THAT(failures_.arguments, IsEmpty());
}

TEST_F(RolledSeries, OldestFilesGoUntilAllLimitsHold) {
    setClock(NOON);
    const std::size_t size = formatLogLine(makeMessage("a")).size() + 1;
    makeRollingAlways({{"keepFiles", "0"}, {"keepSize", "-1 MB"}, {"keepTime", "0 day"}})
        ->output(makeMessage("a"));
    const auto contentOfRolled = [this] {
        std::string content;
        for (const std::string& suffix : suffixes()) {
            content += texts(suffix);
        }
        return content;
    };
    const auto passTime = [] { setClock(Time::now() + Time(1, MIN)); };
    for (const char text : std::string("bcdef")) {
        passTime();
        write(*makeRollingAlways(), std::string(1, text));
    }
    EXPECT_EQ(contentOfRolled(), "abcde");
    const std::pair<Settings, std::string> limits[] = {
        {{{"keepFiles", "4"}}, "cdef"},
        {{{"keepSize", std::to_string(3 * size - 1) + " B"}}, "fg"},
        {{{"keepTime", "90 sec"}}, "gh"},
        {{{"keepFiles", "2"}, {"keepSize", "1 GB"}, {"keepTime", "1 day"}}, "hi"}};
    char text = 'g';
    for (const auto& [settings, kept] : limits) {
        passTime();
        write(*makeRollingAlways(settings), std::string(1, text++));
        EXPECT_EQ(contentOfRolled(), kept);
    }
    EXPECT_EQ(liveTexts(), "j");
    const auto atStart = make({{"keepFiles", "1"}});
    static_cast<RollingFileAppender&>(*atStart).cleanUpOldFiles();
    EXPECT_EQ(contentOfRolled(), "i");
    const auto tiny = make({{"keepSize", "1 B"}});
    static_cast<RollingFileAppender&>(*tiny).cleanUpOldFiles();
    EXPECT_EQ(contentOfRolled() + liveTexts(), "j");
}

TEST_F(RolledSeries, NoOtherFileGoesForThoseThatAreFarAheadOfTheClock) {
    setClock(NOON);
    writeFile(file("20280101T000000Z"), "of a clock that was wrong\n");
    const auto appender = makeRollingAlways({{"keepFiles", "2"}});
    write(*appender, "abcd");
    EXPECT_THAT(suffixes(), ElementsAre(AT_NOON + "-1", AT_NOON + "-2", "20280101T000000Z"));
    setClock(NOON + Time(400, DAY));
    write(*appender, "e");
    EXPECT_EQ(suffixes().size(), 2U);
}

TEST_F(RolledSeries, AClockThatBeganIn1970IsNoReasonToStayWithTheFile) {
    setClock(Time(5, SEC));
    const auto appender = make({{"rollAt", "midnight"}});
    write(*appender, "ab");
    setClock(NOON);
    write(*appender, "c");
    EXPECT_EQ(texts(AT_NOON), "ab");
    EXPECT_EQ(liveTexts(), "c");
}

TEST_F(RolledSeries, AFileThatCannotBeDeletedKeepsNoOtherOne) {
    setClock(NOON);
    AwaitedCommand report;
    LogManager::registerCommandListener("EXCEPTION", &report);
    for (const char* suffix : {"20270101T000000Z", "20270102T000000Z"}) {
        writeFile(file(suffix), "a\n");
        std::filesystem::create_directory(file(suffix + std::string(".gz"))); // cannot be deleted
    }
    for (const char* suffix : {"20270103T000000Z", "20270104T000000Z", "20270105T000000Z"}) {
        writeFile(file(suffix), "a\n");
    }
    const auto appender = make({{"keepFiles", "2"}});
    static_cast<RollingFileAppender&>(*appender).cleanUpOldFiles();
    EXPECT_THAT(suffixes(), ElementsAre("20270101T000000Z.gz", "20270102T000000Z.gz", "20270104T000000Z",
                                        "20270105T000000Z"));
    EXPECT_THAT(report.await(),
                AllOf(HasSubstr("Unable to delete the file: "), EndsWith("f.20270101T000000Z")));
}

TEST_F(RolledSeries, FilesArePackedAndWhatWasInterruptedIsDoneAnew) {
    setClock(NOON);
    for (const char* suffix : {"20270101T000000Z", "20270101T000000Z-1", "20270102T000000Z"}) {
        writeFile(file(suffix), std::string(suffix) + "\n");
    }
    writeFile(file("20270101T000000Z.gz.part"), "killed here");
    writeFile(file("20270101T000000Z-1.gz"), "killed before the source was removed");
    writeFile(file("20260101T000000Z.gz.part"), "its source is gone");
    auto appender = makeRollingAlways({{"compress", "gzip"}});
    static_cast<RollingFileAppender&>(*appender).cleanUpOldFiles();
    await([this] { return isPacked("20270102T000000Z"); });
    EXPECT_THAT(suffixes(),
                ElementsAre("20270101T000000Z-1.gz", "20270101T000000Z.gz", "20270102T000000Z.gz"));
    EXPECT_EQ(unpacked("20270101T000000Z-1.gz"), "20270101T000000Z-1\n");
    write(*appender, "ab");
    EXPECT_EQ(texts(AT_NOON), "a");
    await([this] { return isPacked(AT_NOON); });
    EXPECT_EQ(textsIn(unpacked(AT_NOON + ".gz")), "a");
    write(*appender, "c"); // within the same second
    appender.reset();
    EXPECT_EQ(texts(AT_NOON + "-1") + liveTexts(), "bc");
    EXPECT_THAT(failures_.arguments, IsEmpty());
}

TEST_F(RolledSeries, AnAppenderThatEndsInterruptsPackingAndLeavesNothingHalf) {
    setClock(NOON);
    const std::string suffix = "20270101T000000Z";
    writeFile(file(suffix), noise());
    auto appender = make({{"compress", "gzip"}});
    appender->output(makeMessage("a"));
    await([&] { return fileExists(file(suffix + ".gz.part")); });
    appender.reset();
    EXPECT_THAT(suffixes(), ElementsAre(AnyOf(suffix, suffix + ".gz")));
}

/// As in a reload: the next one is created before the first one is destroyed.
TEST_F(RolledSeries, TheNextAppenderOfTheFilesHasThePackingGoOn) {
    const std::string suffix = "20270101T000000Z";
    writeFile(file(suffix), noise());
    auto appender = make({{"compress", "gzip"}});
    appender->output(makeMessage("a"));
    await([&] { return fileExists(file(suffix + ".gz.part")); });
    auto next = make({{"compress", "gzip"}, {"keepFiles", "9"}});
    static_cast<RollingFileAppender&>(*next).cleanUpOldFiles();
    make({{"compress", "none"}})->output(makeMessage("b")); // while a compression is under way
    appender.reset();
    await([&] { return isPacked(suffix); });
    EXPECT_THAT(failures_.arguments, IsEmpty());
}

/// Two programs may have the same configuration, and start at the same time.
TEST_F(RolledSeries, WhatAnotherProcessPacksIsLeftToIt) {
    writeFile(file(AT_NOON), "a\n");
    writeFile(file(AT_NOON + ".gz"), "its file");
    writeFile(file(AT_NOON + ".gz.part"), "its next one");
    const std::atomic<bool> isInterrupted{false};
    std::string problem;
    {
        Platform::SequentialFile other;
        ASSERT_TRUE(other.open(file(AT_NOON), problem) && other.reserve()) << problem;
        EXPECT_EQ(packFile(file(AT_NOON), isInterrupted).result, PackingResult::DONE);
        removeAbandonedPart(file(AT_NOON));
        EXPECT_EQ(readFile(file(AT_NOON + ".gz")) + ", " + readFile(file(AT_NOON + ".gz.part")),
                  "its file, its next one");
    }
    EXPECT_EQ(packFile(file(AT_NOON), isInterrupted).result, PackingResult::DONE);
    EXPECT_THAT(suffixes(), ElementsAre(AT_NOON + ".gz"));
    EXPECT_EQ(unpacked(AT_NOON + ".gz"), "a\n");
}

TEST_F(RolledSeries, APlainFileThatHasGrownStaysAndOneThatIsGoneStaysGone) {
    writeFile(file(AT_NOON), "a\nlate\n");
    writeFile(file(AT_NOON + ".gz.part"), "without what came late");
    EXPECT_FALSE(replaceByPacked(file(AT_NOON), 2).has_value());
    EXPECT_TRUE(fileExists(file(AT_NOON)));
    const std::atomic<bool> isInterrupted{false};
    EXPECT_EQ(packFile(file(AT_NOON), isInterrupted).result, PackingResult::DONE);
    EXPECT_EQ(unpacked(AT_NOON + ".gz"), "a\nlate\n");
    writeFile(file(AT_NOON + "-1.gz.part"), "what the limits have deleted");
    EXPECT_EQ(replaceByPacked(file(AT_NOON + "-1"), 2)->result, PackingResult::DONE);
    EXPECT_THAT(suffixes(), ElementsAre(AT_NOON + ".gz"));
}

TEST_F(RolledSeries, KeptLinesGoIntoTheFilesThatTheyWouldHaveGoneIntoAlone) {
    setClock(NOON);
    const std::size_t size = formatLogLine(makeMessage("a")).size() + 1;
    const auto appender =
        make({{"asynchronous", "true"}, {"flush", "batch"}, {"rollSize", std::to_string(2 * size) + " B"}});
    auto& batches = static_cast<BatchAppender&>(*appender);
    batches.beginRound();
    write(*appender, "abcde");
    EXPECT_EQ(liveTexts(), "");
    batches.endRound();
    EXPECT_EQ(texts(AT_NOON) + "," + texts(AT_NOON + "-1") + "," + liveTexts(), "ab,cd,e");
    EXPECT_FALSE(batches.hasFailed());
}

TEST_F(RolledSeries, FailuresOfPackingAreCountedAndReported) {
    setClock(NOON);
    LogManager::unregisterCommandListener("EXCEPTION");
    const std::uint64_t before = LogManager::statistics().failed;
    std::filesystem::create_directory(file("20270101T000000Z.gz.part"));
    writeFile(file("20270101T000000Z"), "cannot be packed\n");
    {
        AwaitedCommand report;
        LogManager::registerCommandListener("EXCEPTION", &report);
        const auto appender = make({{"compress", "gzip"}});
        write(*appender, "a");
        EXPECT_THAT(report.await(),
                    AllOf(StartsWith("LogException from packing.\nException = Unable to pack the file: "),
                          HasSubstr("f.20270101T000000Z: Unable to write ")));
    }
    EXPECT_EQ(readFile(file("20270101T000000Z")), "cannot be packed\n");
    EXPECT_GT(LogManager::statistics().failed, before);
    EXPECT_EQ(liveTexts(), "a");
}

TEST_F(RolledSeries, ValuesThatAreNoneAreRejected) {
    const std::pair<const char*, std::vector<const char*>> bad[] = {
        {"rollSize", {"5", "5 kb", "MB", "x MB", "5x MB", "0"}},
        {"rollAt", {"day", "Hour", "none"}},
        {"keepFiles", {"x", "5x", "5 MB"}},
        {"keepSize", {"5", "5 day"}},
        {"keepTime", {"5", "5 days", "5 MB"}},
        {"compress", {"zip", "true"}}};
    for (const auto& [key, values] : bad) {
        for (const char* const value : values) {
            try {
                make({{key, value}});
                ADD_FAILURE() << key << " = " << value;
            } catch (const LogException& exception) {
                EXPECT_EQ(exception.what(),
                          "Wrong value for the x." + std::string(key) + " property: " + value);
            }
        }
    }
    make({{"rollSize", "-1 B"}, {"keepFiles", "-1"}, {"keepTime", "99999999999999999999 day"}});
    for (const char* const name :
         {"RollingFileAppender", "FileAppender", "SimpleFileAppender", "StdoutAppender"}) {
        EXPECT_THROW(LogManager::registerAppenderClass(name, nullptr), LogException) << name;
    }
    const AppenderValues values("x", READ_BY_ROLLING_FILE_APPENDER);
    EXPECT_EQ(values.file, "x.log");
}
