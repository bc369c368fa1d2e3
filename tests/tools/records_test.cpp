#include "Outcome.h"
#include "TestSupport.h"
#include "filters/TimeBound.h"
#include "platform/Clock.h"
#include "records/JsonLine.h"
#include "records/RecordReader.h"
#include "records/TextLines.h"
#include "records/TimeStamp.h"

#include <algorithm>
#include <functional>
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

std::string jsonLine(const std::string& time, const std::string& text) {
    return R"({"time":")" + time + R"(","logger":"net","type":"CFG","thread":1,"text":")" + text + "\"}";
}

LineForm textForm() {
    LineForm form;
    form.hasJson = false;
    return form;
}

Cut cutInto(const LogContent& file, const LineForm& form = textForm(), const std::string& problem = "") {
    RecordReader reader(file, 0, form);
    Record record;
    Cut cut;
    while (reader.next(record) || reader.takeRest(record, true)) {
        if (!record.isContinuation) {
            cut.records.emplace_back(record.lines);
        }
        cut.whole += std::string(record.lines) + (record.isCutInLine ? "" : "\n");
    }
    EXPECT_EQ(problem, reader.problem());
    return cut;
}

TEST(RecordReader, CutsWhereABlockEndsAnywhereInARecord) {
    const TemporaryDirectory directory;
    const std::string path = directory / "long.log";
    for (std::size_t before = 1; before <= 130; ++before) {
        const std::string first = TIME + " a INFO " + std::string(RecordReader::BLOCK - before, 'x');
        const std::string second = TIME + " b INFO c\r\n  " + TIME + "\r\n\r\n" + TIME + "0";
        TestSupport::writeFile(path, first + "\n" + second + "\r\n" + TIME + " c\n" + TIME);
        LogContent file;
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
    LogContent file;
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

TEST(TextLines, TellsTheLayoutsApart) {
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

TEST(TextLines, ReadsEveryFormOfALocation) {
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

TEST(TextLines, ReadsTornLines) {
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

TEST(TimeStamp, CountsDaysAsTheCalendarDoes) {
    for (const char* text :
         {"1970.01.01 00:00:00:000000", "2000.02.29 23:59:59:999999", "2013.12.31 14:03:27:123000",
          "2024.03.01 00:00:00:000001", "2025.01.01 00:00:00:000000", "2100.03.01 12:00:00:000000"}) {
        const std::int64_t microseconds =
            civilSeconds(text) * 1000000 + std::stoi(std::string(text).substr(20));
        EXPECT_EQ(text, civilText(microseconds));
    }
    EXPECT_EQ(1367935407, civilSeconds(TIME));
}

/// \return where a time of the process's zone lies: "before" the span, "in" it or "behind" it
std::string placeOf(const std::string& time, const TimeBound& bound) {
    ZonedClock clock;
    clock.observe(time);
    return bound.isAfter(clock) ? "before" : bound.isBefore(clock) ? "behind" : "in";
}

TEST(TimeBound, TakesAgesAndRefusesHalfNumbers) {
    const std::int64_t now = civilSeconds(TIME) * 1000000;
    EXPECT_NE("before", placeOf("1971.01.01 00:00:00:000000", TimeBound("4294967295d", now)));
    for (const char* text : {"",
                             "2013.",
                             "2013.5",
                             "2013.05.07 ",
                             "2013.05.07 14:3",
                             "2013.05.07 14:03:27:12",
                             "2013.02.29",
                             "2013.05.07T14",
                             "2013-05.07",
                             "2013-05-07T14:03:27.",
                             "2013-05-07T14:03:27.1234567Z",
                             "2013-05-07Z",
                             "2013-05-07T14Z",
                             "2013-05-07T14:03+24:00",
                             "2013-05-07T14:03 02:00",
                             "2013-02-29T14:03Z",
                             "24:00",
                             "4:03",
                             "14:03:",
                             "-1d",
                             "1",
                             "1D",
                             "d",
                             "10  min",
                             "10 ",
                             "1.5h",
                             "99999999999sec"}) {
        EXPECT_THROW(TimeBound(text, now), UsageError) << text;
    }
}

TEST(TimeBound, NamesTheSpanThatItsLastNumberIs) {
    ASSERT_TRUE(Platform::useZone("UTC"));
    const std::int64_t now = civilSeconds(TIME) * 1000000 + 123000;
    struct Case {
        std::string bound, first, last; ///< the first and the last microsecond of the span
    };
    for (const Case& span : std::vector<Case>{
             {"2013", "2013.01.01 00:00:00:000000", "2013.12.31 23:59:59:999999"},
             {"2013-05", "2013.05.01 00:00:00:000000", "2013.05.31 23:59:59:999999"},
             {TIME, TIME, TIME},
             {"2013-05-07 14:03:27.12", "2013.05.07 14:03:27:120000", "2013.05.07 14:03:27:129999"},
             {"2013-05-07T16:03+02:00", "2013.05.07 14:03:00:000000", "2013.05.07 14:03:59:999999"},
             {"2013-05-06T23:33:27-14:30", "2013.05.07 14:03:27:000000", "2013.05.07 14:03:27:999999"},
             {"2013-05-07T14:03:27.12Z", "2013.05.07 14:03:27:120000", "2013.05.07 14:03:27:129999"},
             {"14:03", "2013.05.07 14:03:00:000000", "2013.05.07 14:03:59:999999"},
             {"14:03:26", "2013.05.07 14:03:26:000000", "2013.05.07 14:03:26:999999"},
             {"10m", "2013.05.07 13:53:27:123000", "2013.05.07 13:53:27:123000"},
             {"2 hour", "2013.05.07 12:03:27:123000", "2013.05.07 12:03:27:123000"},
             {"10 min", "2013.05.07 13:53:27:123000", "2013.05.07 13:53:27:123000"}}) {
        const TimeBound bound(span.bound, now);
        const auto shifted = [](const std::string& time, std::int64_t microseconds) {
            return civilText(civilSeconds(time) * 1000000 + civilFraction(time) + microseconds);
        };
        EXPECT_EQ("before", placeOf(shifted(span.first, -1), bound)) << span.bound;
        EXPECT_EQ("in", placeOf(span.first, bound)) << span.bound;
        EXPECT_EQ("in", placeOf(span.last, bound)) << span.bound;
        EXPECT_EQ("behind", placeOf(shifted(span.last, 1), bound)) << span.bound;
    }
}

TEST(RecordReader, FollowsATimeThatGoesBackAsLongAsItDoes) {
    const TemporaryDirectory directory;
    const std::string path = directory / "back.log";
    const auto lineOf = [](int second) {
        return "2013.05.07 14:03:0" + std::to_string(second) + ":000000 a\nmore\n";
    };
    const auto jsonOf = [](int second) {
        return jsonLine("2013-05-07T14:03:0" + std::to_string(second) + ".000Z", "a") + "\n{torn\n";
    };
    for (const std::function<std::string(int)>& line : {std::function<std::string(int)>(lineOf), {jsonOf}}) {
        TestSupport::writeFile(path,
                               line(1) + line(9) + line(8) + line(4) + line(5) + line(5) + line(6) + line(2));
        LogContent file;
        std::string problem;
        ASSERT_TRUE(file.open(path, problem)) << problem;
        RecordReader reader(file, 0, LineForm());
        Record record;
        std::string lowest;
        while (reader.next(record)) {
            lowest += reader.lowestFrom(record.time())[18];
        }
        EXPECT_EQ("1444552", lowest);
    }
}

TEST(RecordReader, ReadsLinesOfJsonWhereverABlockEnds) {
    const TemporaryDirectory directory;
    const std::string path = directory / "json.log";
    Platform::useZone("UTC");
    for (std::size_t before = 1; before <= 260; before += 13) {
        const std::string first(RecordReader::BLOCK - before, 'x');
        TestSupport::writeFile(path, jsonLine("2013-05-07T14:03:27.123Z", first) + "\r\n{torn\r\n\r\n" +
                                         jsonLine("2013-05-07T16:03:27.123+02:00", "b\\nc") + "\n" + TIME +
                                         " plain\n" + jsonLine("2013-05-07T14:03:27.123Z", "d"));
        LogContent file;
        std::string problem;
        ASSERT_TRUE(file.open(path, problem)) << problem;
        const Cut cut = cutInto(file, LineForm());
        ASSERT_EQ(4u, cut.records.size()) << before;
        EXPECT_EQ(TIME + " net " + first + "\n{torn\n", cut.records[0]);
        EXPECT_EQ(TIME + " net b\nc", cut.records[1]);
        EXPECT_EQ(TIME + " plain", cut.records[2]);
        EXPECT_EQ(TIME + " net d", cut.records[3]);
    }
    const std::string tooLong = jsonLine(
        "2013-05-07T14:03:27.123Z", std::string(RecordReader::LONGEST_RECORD + RecordReader::BLOCK, 'x'));
    TestSupport::writeFile(path, jsonLine("2013-05-07T14:03:27.123Z", "a") + "\n" + tooLong + "\n" +
                                     jsonLine("2013-05-07T14:03:27.123Z", "c") + "\n");
    LogContent file;
    std::string problem;
    ASSERT_TRUE(file.open(path, problem)) << problem;
    const Cut cut =
        cutInto(file, LineForm(), "A line of more than 4 MiB is shown as it stands, whatever its layout");
    EXPECT_EQ(TIME + " net a\n" + tooLong + "\n" + TIME + " net c\n", cut.whole);
    EXPECT_EQ(2u, cut.records.size());
}

TEST(RecordReader, ReadsAsJsonNothingThatIsNoneOfItsLines) {
    const auto isRead = [](const std::string& line) { return readJsonLine(line) != nullptr; };
    const std::string time = R"({"time":"2013-05-07T14:03:27.123Z",)";
    EXPECT_TRUE(isRead(time + R"("type":"CFG","text":""})"));
    EXPECT_TRUE(isRead(time + R"("type":"CFG","text":"","other":[{"text":1}],"values":{"a":{"b":[1]}}})"));
    EXPECT_TRUE(isRead(time + R"("text":"","type":"LOG","level":"INFO"} )"));
    const auto nested = readJsonLine(time + R"("type":"CFG","text":"t","values":{"a":{"b":[1]},"c":1.50}})");
    EXPECT_EQ("2013.05.07", nested->shown().substr(0, 10));
    EXPECT_EQ(" t c=1.50", nested->shown().substr(TIME.size()));
    for (const char* const rest :
         {R"("type":"CFG"})", R"("text":""})", R"("type":"LOG","text":""})", R"("type":"log","text":""})",
          R"("type":"CFG","text":1})", R"("type":"CFG","text":"","line":"1"})",
          R"("type":"CFG","text":"","line":-1})", R"("type":"CFG","text":"","values":[]})",
          R"("type":"CFG","text":"","context":"a"})", R"("type":"CFG","text":{}})",
          R"("type":"LOG","level":"info","text":""})", R"("type":"CFG","text":""}})",
          R"("type":"CFG","text":"","time":5})", "\"type\":\"CFG\",\"text\":\"\xff\"}", ""}) {
        EXPECT_FALSE(isRead(time + rest)) << rest;
    }
    for (const char* const wrong :
         {"2013-05-07T14:03:27", "2013-05-07 14:03:27Z", "2013-02-30T14:03:27Z", "2013-05-07T24:03:27Z",
          "2013-05-07T14:03:27.Z", "2013-05-07T14:03:27+2:00", "1969-12-31T23:59:59Z", "2013-05-07", ""}) {
        EXPECT_FALSE(isRead(jsonLine(wrong, ""))) << wrong;
    }
    EXPECT_TRUE(isRead(jsonLine("9999-12-31T23:59:59.999999999Z", "")));
    EXPECT_TRUE(isRead(jsonLine("1970-01-01T00:00:00Z", "")));
}

} // namespace
} // namespace Tools
} // namespace ZAV
