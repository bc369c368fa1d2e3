#include "TestSupport.h"
#include "UsageError.h"
#include "filters/TimeBound.h"
#include "records/CivilTime.h"
#include "records/LineParser.h"
#include "records/RecordReader.h"
#include "records/TimeStamp.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {
namespace {

using TestSupport::TemporaryDirectory;

const std::string TIME = "2013.05.07 14:03:27:123000";

struct Cut {
    std::vector<std::string> records;
    std::string whole; ///< all records, with their ends as they were taken
};

Cut cutInto(const Platform::InputFile& file) {
    RecordReader reader(file);
    Record record;
    Cut cut;
    while (reader.next(record) || reader.takeRest(record, true)) {
        if (!record.isContinuation) {
            cut.records.emplace_back(record.lines);
        }
        cut.whole += std::string(record.lines) + (record.isCutInLine ? "" : "\n");
    }
    EXPECT_EQ("", reader.problem());
    return cut;
}

TEST(RecordReader, CutsWhereABlockEndsAnywhereInARecord) {
    const TemporaryDirectory directory;
    const std::string path = directory / "long.log";
    for (std::size_t before = 1; before <= 130; ++before) {
        const std::string first = TIME + " a INFO " + std::string(RecordReader::BLOCK - before, 'x');
        const std::string second = TIME + " b INFO c\r\n  " + TIME + "\r\n\r\n" + TIME + "0";
        TestSupport::writeFile(path, first + "\n" + second + "\r\n" + TIME + " c\n" + TIME);
        Platform::InputFile file;
        std::string problem;
        ASSERT_TRUE(file.open(path, problem)) << problem;

        const Cut cut = cutInto(file);

        ASSERT_EQ(4u, cut.records.size()) << before;
        EXPECT_EQ(first, cut.records[0]);
        EXPECT_EQ(TIME + " b INFO c\n  " + TIME + "\n\n" + TIME + "0", cut.records[1]);
        EXPECT_EQ(TIME, cut.records[3]);
    }
}

TEST(RecordReader, GivesAVeryLongRecordInPartsThatMakeItUpAgain) {
    const TemporaryDirectory directory;
    std::string content = TIME + " a INFO begin\n" + std::string(RecordReader::LONGEST_RECORD - 100, 'x');
    for (int line = 0; line < 100000; ++line) {
        content += "\r\nline " + TIME + " of the text";
    }
    TestSupport::writeFile(directory / "long.log", content + "\n" + TIME + " b INFO end\n");
    Platform::InputFile file;
    std::string problem;
    ASSERT_TRUE(file.open(directory / "long.log", problem)) << problem;

    const Cut cut = cutInto(file);

    EXPECT_EQ(2u, cut.records.size());
    content.erase(std::remove(content.begin(), content.end(), '\r'), content.end());
    EXPECT_TRUE(cut.whole == content + "\n" + TIME + " b INFO end\n");
}

TEST(TimeStamp, TakesWhatTheLibraryWritesAndNothingElse) {
    for (const char* end : {"", " ", "\r", "\n"}) {
        EXPECT_TRUE(startsWithTime(TIME + end));
    }
    EXPECT_TRUE(startsWithTime("2016.12.31 23:59:60:999999 "));
    for (const char* text :
         {"2013.05.07 14:03:27:12300", "2013.05.07 14:03:27:1230000", "2013.13.07 14:03:27:123000",
          "2013.00.07 14:03:27:123000", "2013.05.32 14:03:27:123000", "2013.05.00 14:03:27:123000",
          "2013.05.07 24:03:27:123000", "2013.05.07 14:60:27:123000", "2013.05.07 14:03:61:123000",
          "2013-05.07 14:03:27:123000", "2013.05.07 14:03:27.123000", "0000.00.00 00:00:00:000000"}) {
        EXPECT_FALSE(startsWithTime(text)) << text;
    }
}

TEST(LineParser, TellsTheLayoutsApart) {
    const auto layoutOfWords = [](const std::string& words) { return layoutOf(TIME + " " + words); };
    EXPECT_EQ(Layout::PLAIN, layoutOfWords("net INFO text"));
    EXPECT_EQ(Layout::PLAIN, layoutOfWords("net a.cpp:5 INFO"));
    EXPECT_EQ(Layout::PROCESS, layoutOfWords("server 42 alpha net INFO text"));
    EXPECT_EQ(Layout::PROCESS, layoutOfWords("server 42 ERROR net a.cpp:5 INFO text"));
    EXPECT_EQ(Layout::PROCESS, layoutOfWords("server 42 alpha  INFO text"));
    EXPECT_EQ(Layout::UNKNOWN, layoutOfWords("server 42 alpha net reloaded"));
    EXPECT_EQ(Layout::UNKNOWN, layoutOfWords("server x42 alpha net INFO text"));
    EXPECT_EQ(Layout::UNKNOWN, layoutOfWords("net  INFO of a configuration message"));
    EXPECT_EQ(Layout::UNKNOWN, layoutOfWords("net reloaded\nnow INFO"));
    EXPECT_EQ(Layout::UNKNOWN, layoutOf(TIME));
}

TEST(LineParser, ReadsEveryFormOfALocation) {
    struct Case {
        std::string word, file, line;
    };
    for (const Case& location : std::vector<Case>{{"a.cpp:5", "a.cpp", "5"},
                                                  {":5", "", "5"},
                                                  {"a.cpp", "a.cpp", ""},
                                                  {"C:\\a.cpp", "C:\\a.cpp", ""},
                                                  {"a:7:5", "a:7", "5"},
                                                  {"a.cpp:0", "a.cpp:0", ""},
                                                  {"a.cpp:5x", "a.cpp:5x", ""},
                                                  {"a:99999999999", "a:99999999999", ""}}) {
        const std::string line = TIME + " net " + location.word + " ERROR  text \nmore";
        const Fields fields = parseRecord(line, Layout::UNKNOWN);
        EXPECT_EQ(location.file, fields.file) << location.word;
        EXPECT_EQ(location.line, fields.line) << location.word;
        EXPECT_EQ(" text \nmore", fields.text);
        EXPECT_EQ(Log::Level::LEVEL_ERROR, fields.level);
    }
}

TEST(LineParser, ReadsTornLines) {
    for (const std::string words : {"", " ", " server", " server 42", " server 42 alpha"}) {
        const std::string line = TIME + words;
        const Fields fields = parseRecord(line, Layout::PROCESS);
        EXPECT_EQ("", fields.logger) << words;
        EXPECT_EQ(words.empty() ? "" : words.substr(1), fields.text);
    }
    const std::string withoutText = TIME + " server 42 alpha net INFO\nsecond line";
    EXPECT_EQ("\nsecond line", parseRecord(withoutText, Layout::PROCESS).text);
    const std::string ofAnother = TIME + " net INFO text";
    EXPECT_EQ("net", parseRecord(ofAnother, Layout::PROCESS).logger);
}

TEST(CivilTime, CountsDaysAsTheCalendarDoes) {
    for (const char* text :
         {"1970.01.01 00:00:00:000000", "2000.02.29 23:59:59:999999", "2013.12.31 14:03:27:123000",
          "2024.03.01 00:00:00:000001", "2025.01.01 00:00:00:000000", "2100.03.01 12:00:00:000000"}) {
        const std::int64_t microseconds =
            civilSeconds(text) * 1000000 + std::stoi(std::string(text).substr(20));
        EXPECT_EQ(text, civilText(microseconds));
    }
    EXPECT_EQ(1367935407, civilSeconds(TIME));
}

TEST(TimeBound, TakesAgesAndRefusesHalfNumbers) {
    const std::int64_t now = civilSeconds(TIME) * 1000000;
    const TimeBound age("4294967295d", now);
    EXPECT_FALSE(age.isAfter("1971.01.01 00:00:00:000000"));
    for (const char* text :
         {"", "2013.", "2013.5", "2013.05.07 ", "2013.05.07 14:3", "2013.05.07 14:03:27:123000", "2013.02.29",
          "2013.05.07T14", "-1d", "1", "1D", "d", "1.5h", "99999999999sec"}) {
        EXPECT_THROW(TimeBound(text, now), UsageError) << text;
    }
}

} // namespace
} // namespace Tools
} // namespace ZAV
