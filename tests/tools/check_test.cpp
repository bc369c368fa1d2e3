#include "TestSupport.h"
#include "check/Checker.h"
#include "check/Findings.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {
namespace {

using testing::EndsWith;
using TestSupport::StreamCapture;
using TestSupport::TemporaryDirectory;

const std::string FILE_NAME = "app.properties";

/// A property file, and what is found in it: "line id", in the order of the findings.
struct Case {
    std::string content;
    std::vector<std::string> findings;
};

const std::string SERVER = "appender.s = FileAppender\n";
const std::string CONSOLE = "appender.c = StdoutAppender\n";
const std::string ROLLED = "appender.r = RollingFileAppender\n";
const std::string DISPATCHER = "zav.log.AsynchronousDispatcher.";

std::string dots(std::size_t count) {
    return std::string(count, '.');
}

const std::vector<Case> CASES = {
    // The grammar, and the lines behind what breaks it.
    {"", {}},
    {"# only a remark\n\nlogger.root.level = INFO", {}},
    {"a\n= b\nc/d = 1\n \nlogger.x.level = Info\nlogger.x.level = INFO\r\n",
     {"1 grammar", "2 grammar", "3 grammar", "4 grammar", "5 bad-level", "6 grammar"}},

    // Appenders.
    {"appender.s = Fileappender\nappender.s.ostream = cerr\n", {"1 unknown-class"}},
    {"appender..s = FileAppender\n", {"1 unknown-class"}},
    {CONSOLE + "appender..c = StdoutAppender\nappender.c. = x\n",
     {"2 duplicate-appender", "3 duplicate-appender"}},
    {"appender.c.level = x\n" + SERVER + "appender.c.colour = red\n", {"1 undeclared-appender"}},

    // Keys.
    {"logger.level = INFO\nlogger.x.levle = INFO\nloger.x.level = INFO\ncolour = red\n" + DISPATCHER +
         "size = 5\nappender = x\nappender..c.level = INFO\n",
     {"1 unknown-key", "2 unknown-key", "3 unknown-key", "4 unknown-key", "5 unknown-key", "6 unknown-key",
      "7 unknown-key"}},
    {CONSOLE +
         "appender.c.dir = x\nappender.c.expiration = x\nappender.c.colour = red\nappender.c.x.level = x\n",
     {"2 ignored-key", "3 ignored-key", "4 unknown-key", "5 unknown-key"}},
    {SERVER +
         "appender.s.fileMaxSize = 5x\nappender.s.fileMaxLifetimeUnit = weeks\nappender.s.ostream = cout\n",
     {"2 lonely-pair", "3 lonely-pair", "4 ignored-key"}},

    // Loggers that cannot be; the value and the attribute do not matter then.
    {"logger.a" + dots(999) + ".level = INFO\nlogger.a" + dots(1000) + ".level = info\nlogger.a" +
         dots(1000) + ".colour = red\n",
     {"2 bad-name", "3 bad-name"}},
    {CONSOLE + "appender.c.filters = a" + dots(1000) + "\nappender.c.level = WARNING\n", {}},

    // Values that are rejected.
    {CONSOLE + "appender.c.level = info\nappender.c.expiration = soon\nappender.c.message_type = cfg\n",
     {"2 bad-level", "3 bad-expiration", "4 bad-message-type"}},
    {CONSOLE + "appender.c.layout = Json\nappender.c.fields = level colour\n",
     {"2 bad-layout", "3 bad-layout"}},
    {CONSOLE + "appender.c.layout = fields\n", {"2 bad-layout"}},
    {CONSOLE + "appender.c.layout = fields\nappender.c.fields = utc level text\n" + SERVER +
         "appender.s.layout = json\n",
     {}},
    {CONSOLE + "appender.c.layout = json\nappender.c.fields = utc level text\n" + SERVER +
         "appender.s.fields = text\n",
     {"3 ignored-key", "5 ignored-key"}},
    {"logger.x.level = verbose\nlogger.x.expiration = 5x\n" + DISPATCHER + "priority = high\n" + DISPATCHER +
         "waitingPeriod = 1 2\n" + DISPATCHER + "maxQueueSize = none\n",
     {"1 bad-level", "2 bad-number", "3 bad-number", "4 bad-number", "5 bad-number"}},

    // Values that count as others.
    {"logger.root.level = TRACE\n" + CONSOLE +
         "appender.c.level = INFO\nappender.c.expiration = 10 minutes long\n"
         "appender.c.asynchronous = TRUE\nappender.c.ostream = stderr\n" +
         DISPATCHER + "overflow = wait\n",
     {"4 unknown-unit", "4 unknown-value", "5 unknown-value", "6 unknown-value", "7 unknown-value"}},
    {SERVER +
         "appender.s.fileNumber = 3 files\nappender.s.fileMaxSize = many\nappender.s.fileMaxSizeUnit = kb\n"
         "appender.s.fileMaxLifetime = 5d\nappender.s.fileMaxLifetimeUnit = day\n",
     {"2 partly-read", "3 partly-read", "4 unknown-unit", "5 partly-read", "6 unknown-unit"}},
    {SERVER +
         "appender.s.fileNumber = 10\nappender.s.fileMaxSizeUnit = GB\nappender.s.fileMaxSize = 17179869184\n"
         "appender.s.fileMaxLifetime = -1\nappender.s.fileMaxLifetimeUnit = d\n",
     {"2 out-of-range", "4 out-of-range", "5 out-of-range"}},
    {SERVER +
         "appender.s.fileNumber = 9\nappender.s.fileMaxSizeUnit = GB\nappender.s.fileMaxSize = 17179869183\n"
         "appender.s.fileMaxLifetime = 0\nappender.s.fileMaxLifetimeUnit = d\n",
     {}},
    {SERVER + "appender.s.fileNumber = -1\nappender.s.fileMaxSizeUnit = B\n"
              "appender.s.fileMaxSize = 99999999999999999999\nlogger.x.expiration = 2147483648\n"
              "logger.y.expiration = -1\n",
     {"2 out-of-range", "4 out-of-range", "5 out-of-range", "6 out-of-range"}},
    {DISPATCHER + "maxQueueSize = -1\n" + DISPATCHER + "waitingPeriod = 0\n" + DISPATCHER + "priority = -7\n",
     {}},
    {DISPATCHER + "maxQueueSize = -2\n" + DISPATCHER + "waitingPeriod = -2\n",
     {"1 out-of-range", "2 out-of-range"}},

    {SERVER + "appender.s.recovery = often\nappender.s.escape = yes\nappender.s.fileMode = 800\n"
              "appender.s.followLinks = False\n",
     {"2 bad-expiration", "3 unknown-value", "4 unknown-value", "5 unknown-value"}},
    {SERVER +
         "appender.s.flush = Batch\nappender.t = SimpleFileAppender\nappender.t.asynchronous = true\n"
         "appender.t.flush = batch\n" +
         CONSOLE + "appender.c.asynchronous = true\nappender.c.flush = line\n",
     {"2 unknown-value", "8 ignored-key"}},
    {SERVER + "appender.s.flush = batch\nappender.t = SimpleFileAppender\nappender.t.flush = line\n",
     {"2 ignored-key"}},
    {SERVER + "appender.s.recovery = -1 secs\n" + CONSOLE + "appender.c.recovery = often\n",
     {"2 unknown-unit", "2 out-of-range", "4 ignored-key"}},

    {ROLLED + "appender.r.rollSize = 5\nappender.r.rollAt = noon\nappender.r.keepFiles = 5 days\n"
              "appender.r.keepSize = 5 mb\nappender.r.keepTime = 5 days\nappender.r.compress = zip\n"
              "appender.r.fileNumber = 3\n",
     {"2 bad-value", "3 bad-value", "4 bad-value", "5 bad-value", "6 bad-value", "7 bad-value",
      "8 ignored-key"}},
    {ROLLED +
         "appender.r.rollSize = 5 MB or so\nappender.r.rollAt = hour\nappender.r.keepFiles = -5\n"
         "appender.r.keepSize = 17179869184 GB\nappender.r.keepTime = 0 day\nappender.r.compress = gzip\n"
         "appender.r.recovery = 5 sec\nappender.r.escape = true\n" +
         SERVER + "appender.s.rollAt = hour\n",
     {"2 unknown-value", "4 out-of-range", "5 out-of-range", "11 ignored-key"}},

    // What lines do to each other.
    {ROLLED + "appender.t = SimpleFileAppender\nappender.t.file = r.log\n" + SERVER +
         "appender.s.file = a\nappender.u = RollingFileAppender\nappender.u.file = a3\n",
     {"2 shared-file", "6 shared-file"}},
    {DISPATCHER + "maxQueueSize = 1\n" + CONSOLE + "appender.c.asynchronous = true\n", {"3 no-queue"}},
    {DISPATCHER + "maxQueueSize = 2\n" + CONSOLE + "appender.c.asynchronous = true\n", {}},
    {DISPATCHER + "maxQueueSize = 0\n" + CONSOLE + "appender.c.asynchronous = false\n", {}},
    {DISPATCHER + "queueFile = q\n" + DISPATCHER + "maxQueueSize = 2000000\n", {"2 queue-file"}},
    {DISPATCHER + "queueFile = q\n" + DISPATCHER + "maxQueueSize = 5000\n" + DISPATCHER +
         "queueFileSize = 1 MB\n",
     {}},
    {DISPATCHER + "queueFile = q\n" + DISPATCHER + "maxQueueSize = 5500\n" + DISPATCHER +
         "queueFileSize = 1 MB\n",
     {"3 queue-file"}},
    {DISPATCHER + "queueFile = q\n" + DISPATCHER + "maxQueueSize = -1\n" + DISPATCHER +
         "queueFileSize = 63 KB\n",
     {"3 out-of-range"}},
    {DISPATCHER + "queueFileSize = 64 KB\n" + DISPATCHER + "queueFile = q\n", {"1 queue-file"}},
    {DISPATCHER + "queueFile = q\n" + DISPATCHER + "queueFileSize = 64 KB\n" + DISPATCHER +
         "maxQueueSize = -1\n",
     {}},
    {DISPATCHER + "queueFile = q\n" + DISPATCHER + "queueFileSize = 20 MB or so\n", {"2 unknown-value"}},
    {DISPATCHER + "queueFileSize = 5\n", {"1 ignored-key", "1 bad-number"}},
    {SERVER +
         "appender.s.dir = nowhere\nappender.t = SimpleFileAppender\nappender.t.file = app.properties/x\n",
     {"2 missing-directory", "4 missing-directory"}},
    {SERVER +
         "appender.s.file = a\nappender.s.dir = ./.\nappender.t = SimpleFileAppender\nappender.t.file = a0\n"
         "appender.u = FileAppender\nappender.u.file = a0\n"
         "appender.v = SimpleFileAppender\nappender.v.file = a4\n",
     {"4 shared-file"}},
    {"appender.t = FileAppender\nappender.t.file = s\n" + SERVER, {"3 shared-file"}},
    {CONSOLE + "appender.c.level = INFO\n", {"2 unreachable-level"}},
    {CONSOLE + "appender.c.level = INFO\nappender.c.expiration = 1 min\n", {}},
    {CONSOLE + "appender.c.level = WARNING\nlogger.root.level = WARNING\nlogger.x.level = ERROR\n", {}},
    {CONSOLE + "appender.c.level = DEBUG\nappender.c.filters = a.b c\nlogger.c.level = INFO\nlogger.a.level "
               "= INFO\n"
               "logger.root.level = TRACE\n",
     {"2 unreachable-level"}},
    {CONSOLE + "appender.c.level = DEBUG\nappender.c.filters = a.b c\nlogger.c.level = INFO\nlogger.a.level "
               "= DEBUG\n",
     {}},
    {"logger.network.level = INFO\n" + CONSOLE +
         "appender.c.filters = db net\nlogger.network.tcp.expiration = 0\n"
         "logger.net.level = INFO\nlogger.net.x.level = INFO\n",
     {"3 prefix-surprise", "4 prefix-surprise"}},
    {CONSOLE + "appender.c.filters = net network\nlogger.network.level = INFO\nlogger.netx.level = INFO\n",
     {"4 prefix-surprise"}},
};

/// Runs each test in a folder of its own, which is the current one.
class CheckTest : public testing::Test {
protected:
    CheckTest() { std::filesystem::current_path(directory_.path()); }
    ~CheckTest() override { std::filesystem::current_path(original_); }

    static std::vector<Finding> findingsIn(const std::string& content) {
        TestSupport::writeFile(FILE_NAME, content);
        return Checker().check(FILE_NAME);
    }

    static std::string textOf(const std::string& content) {
        const std::vector<Finding> findings = findingsIn(content);
        return findings.empty() ? std::string() : toText(FILE_NAME, findings.back(), false);
    }

    /// What `init` throws, or the first line that it reports.
    static std::string initError() {
        const StreamCapture reports(std::cerr);
        try {
            Log::LogManager::init(FILE_NAME);
            Log::LogManager::finish();
        } catch (const std::exception& exception) {
            return exception.what();
        }
        const std::string text = reports.text();
        return text.substr(0, text.find('\n'));
    }

private:
    std::filesystem::path original_ = std::filesystem::current_path();
    TemporaryDirectory directory_;
};

TEST_F(CheckTest, FindsWhatItsAuthorDidNotWant) {
    for (const Case& example : CASES) {
        std::vector<std::string> found;
        for (const Finding& finding : findingsIn(example.content)) {
            found.push_back(std::to_string(finding.line) + ' ' + finding.id);
        }
        EXPECT_EQ(example.findings, found) << example.content;
    }
}

TEST_F(CheckTest, CallsErrorExactlyWhatInitComplainsOf) {
    for (const Case& example : CASES) {
        std::vector<Finding> errors;
        for (const Finding& finding : findingsIn(example.content)) {
            if (finding.severity == Finding::AN_ERROR) {
                errors.push_back(finding);
            }
        }
        const std::string complaint = initError();
        EXPECT_EQ(complaint.empty(), errors.empty()) << example.content << complaint;
        const bool isNamed = std::any_of(errors.begin(), errors.end(), [&complaint](const Finding& error) {
            return testing::Value(error.text, EndsWith(complaint));
        });
        EXPECT_TRUE(errors.empty() || isNamed) << example.content << complaint;
    }
}

TEST_F(CheckTest, FindsAQueueFileThatCannotBeOrThatTwoFilesName) {
    const std::string text = DISPATCHER + "queueFile = ";
    EXPECT_THAT(textOf(text + "nowhere/q\n"),
                testing::AllOf(testing::HasSubstr(":1: warning: "), EndsWith("nowhere' [queue-file]")));
    TestSupport::writeFile("a", text + "./q\n");
    TestSupport::writeFile("b", text + "q\n");
    Checker checker;
    EXPECT_TRUE(checker.check("a").empty());
    EXPECT_TRUE(checker.check("a").empty()); // named once more
    const std::vector<Finding> findings = checker.check("b");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].id, "queue-file");
    EXPECT_EQ(findings[0].text, "'a' names this file, too; one program at a time can have it");
}

TEST_F(CheckTest, WordsItsFindingsAsACompilerDoes) {
    const std::string pair = "appender.s.fileMaxSize = 5\n";
    EXPECT_EQ("app.properties:3: warning: appender.s.fileMaxSizeUnit: unknown unit 'kb' counts as bytes; "
              "did you mean 'KB'? [unknown-unit]",
              textOf(SERVER + pair + "appender.s.fileMaxSizeUnit = kb\n"));
    EXPECT_EQ(
        "app.properties:2: warning: appender.s.recovery: unknown unit 'secs' counts as minutes; did you "
        "mean 'sec'? [unknown-unit]",
        textOf(SERVER + "appender.s.recovery = 5 secs\n"));
    EXPECT_EQ("app.properties:2: warning: appender.c.fileMaxSizes: nothing reads this key [unknown-key]",
              textOf(CONSOLE + "appender.c.fileMaxSizes = 5\n")); // nor would it read fileMaxSize
    EXPECT_EQ("app.properties:1: error: appender.s: did you mean 'FileAppender'? No factory registered for "
              "appenderName = s, appenderClass = File [unknown-class]",
              textOf("appender.s = File\n"));
    EXPECT_EQ("app.properties:2: error: appender.c.level: did you mean 'DEBUG'? There is no 'Debug' LogLevel "
              "defined. [bad-level]",
              textOf(CONSOLE + "appender.c.level = Debug\n"));
    EXPECT_EQ("app.properties:2: error: Property file app.properties contains a malformed property on line 2 "
              "[grammar]",
              textOf("# remark\nx\n"));
    EXPECT_EQ("app.properties:2: warning: appender.s.fileSize: nothing reads this key; did you mean "
              "'appender.s.fileMaxSize'? [unknown-key]",
              textOf(SERVER + "appender.s.fileSize = 5\n"));
    EXPECT_EQ("app.properties:1: warning: apender.s: nothing reads this key; did you mean 'appender.s'? "
              "[unknown-key]",
              textOf("apender.s = FileAppender\n"));
    EXPECT_EQ("app.properties:1: warning: apender..s: nothing reads this key [unknown-key]",
              textOf("apender..s = FileAppender\n"));
    EXPECT_EQ(
        "app.properties:1: warning: zav.log.AsynchronousDispatcher.x: nothing reads this key [unknown-key]",
        textOf(DISPATCHER + "x = 5\n"));
}

TEST_F(CheckTest, GuessesNoMoreThanItCanInAMoment) {
    std::string content = "logger.x0.levle = INFO\n";
    for (int i = 1; i < 5000; ++i) {
        content += "logger.x" + std::to_string(i) + ".levle = INFO\n";
    }
    content += "appender.s = " + std::string(4000000, 'F') + '\n';
    const std::vector<Finding> findings = findingsIn(content); // the time limit of the test is the failure
    ASSERT_EQ(5001U, findings.size());
    EXPECT_THAT(findings.front().text, EndsWith("did you mean 'logger.x0.level'?"));
    EXPECT_EQ("nothing reads this key", findings[4999].text);
    EXPECT_EQ(0U, findings[5000].text.find("No factory registered for appenderName = s"));
}

TEST_F(CheckTest, SaysThatAFileCannotBeRead) {
    const std::vector<Finding> findings = Checker().check("missing");
    ASSERT_EQ(1U, findings.size());
    EXPECT_EQ(0U, findings[0].line);
    EXPECT_EQ("unreadable", findings[0].id);
    EXPECT_EQ(0U, findings[0].text.find("Unable to open file: missing"));
}

} // namespace
} // namespace Tools
} // namespace ZAV
