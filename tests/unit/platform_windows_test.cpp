// Windows-specific behaviour.

#include "TestSupport.h"

#include "log/LogLine.h"
#include "log/appenders/FileAppender.h"
#include "log/appenders/SimpleFileAppender.h"
#include "log/async/AsynchronousDispatcher.h"
#include "platform/OpenFiles.h"

#include <algorithm>
#include <memory>
#include <windows.h>

using namespace ZAV;
using namespace ZAV::Log;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using TestSupport::makeMessage;

namespace {

/// The content with unconverted line ends.
std::string readBytes(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

class WindowsFiles : public testing::Test {
protected:
    void SetUp() override { LogManager::registerCommandListener("EXCEPTION", &failures_); }

    std::unique_ptr<Appender> makeSeries(const std::string& dir, std::uint64_t maxSize) {
        AppenderValues values("x");
        values.dir = dir;
        values.file = "f";
        values.fileMaxSize = maxSize;
        return std::make_unique<FileAppender>(values, Appender::Filters());
    }

    std::string file(int index) const { return directory_ / ("f" + std::to_string(index)); }

    const TestSupport::TemporaryDirectory directory_;
    TestSupport::RecordingListener failures_;
};

} // namespace

TEST_F(WindowsFiles, LinesEndInTwoBytesOfWhichOneIsCounted) {
    const LogMessage message = makeMessage("a");
    const std::string line = formatLogLine(message);
    const auto appender = makeSeries(directory_.path(), 2 * (line.size() + 1));
    for (int i = 0; i < 3; ++i) {
        appender->output(message);
    }
    EXPECT_EQ(readBytes(file(1)), line + "\r\n" + line + "\r\n");
    EXPECT_EQ(readBytes(file(0)), line + "\r\n");
}

TEST_F(WindowsFiles, OtherBytesArriveAsTheyAreAndFoldersMayBeWrittenWithBackslashes) {
    const std::string text = "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80 \x1A\r \x80\xFF " +
                             std::string(100000, 'x') + " end";
    const LogMessage message = makeMessage(text);
    std::string dir = directory_.path();
    std::replace(dir.begin(), dir.end(), '/', '\\');
    makeSeries(dir, 1000)->output(message);
    makeSeries(dir, 1000)->output(makeMessage("2"));
    AppenderValues values("y");
    values.dir = dir;
    SimpleFileAppender(values, Appender::Filters()).output(message);
    EXPECT_THAT(readBytes(file(0)), EndsWith(" 2\r\n"));
    EXPECT_EQ(readBytes(file(1)), formatLogLine(message) + "\r\n");
    EXPECT_EQ(readBytes(directory_ / "y"), formatLogLineWithProcess(message) + "\r\n");
    EXPECT_THAT(failures_.arguments, IsEmpty());
}

TEST_F(WindowsFiles, AppendedTextGoesToTheEndOfThatMoment) {
    Platform::OutputFile one;
    Platform::OutputFile other;
    one.open(directory_ / "x", Platform::OutputFile::APPEND);
    other.open(directory_ / "x", Platform::OutputFile::APPEND);
    one.write("1\n");
    other.write("2\n");
    one.write("3\n");
    EXPECT_EQ(readBytes(directory_ / "x"), "1\r\n2\r\n3\r\n");
    EXPECT_FALSE(one.hasFailed() || other.hasFailed());
}

TEST_F(WindowsFiles, WhatHasAppearedInTheNewFilesPlaceIsKeptAndAPipeIsRefused) {
    using Platform::OutputFile;
    const std::string path = directory_ / "x";
    std::ofstream(path) << "found\n" << std::flush;
    OutputFile file;
    file.open(path, OutputFile::CREATE);
    file.write("new\n");
    file.close();
    EXPECT_EQ(readBytes(path), "found\r\nnew\r\n");
    file.open(path, OutputFile::TRUNCATE);
    EXPECT_EQ(file.size(), 0U);
    file.close();

    const std::string name = "\\\\.\\pipe\\zav-log-test-" + std::to_string(GetCurrentProcessId());
    const HANDLE pipe =
        CreateNamedPipeA(name.c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_BYTE, 1, 0, 0, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    for (const OutputFile::Mode mode : {OutputFile::TRUNCATE, OutputFile::APPEND, OutputFile::CREATE}) {
        file.open(name, mode);
        EXPECT_FALSE(file.isOpen()) << mode;
        file.close();
    }
    CloseHandle(pipe);
}

TEST_F(WindowsFiles, AFileThatIsHeldOpenStaysWhereItIsAndLoggingGoesOn) {
    const auto appender = makeSeries(directory_.path(), 1);
    appender->output(makeMessage("1"));
    appender->output(makeMessage("2"));
    const std::ifstream reader(file(1));
    appender->output(makeMessage("3"));
    appender->output(makeMessage("4"));
    EXPECT_THAT(readBytes(file(0)), EndsWith(" 4\r\n"));
    EXPECT_THAT(readBytes(file(1)), EndsWith(" 1\r\n"));
    EXPECT_FALSE(TestSupport::fileExists(file(2)));
    EXPECT_THAT(failures_.arguments, IsEmpty());
}

TEST(WindowsDispatcher, GivesItsThreadTheConfiguredPriority) {
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
    std::vector<int> priorities;
    TestSupport::CallingAppender appender(
        [&](const LogMessage&) { priorities.push_back(GetThreadPriority(GetCurrentThread())); }, false);
    const LogMessage message = makeMessage("a");
    for (const char* priority : {"25", "0", "26"}) {
        Util::Properties properties;
        properties["zav.log.AsynchronousDispatcher.priority"] = priority;
        dispatcher.configure(properties);
        dispatcher.enqueue(message, true);
        dispatcher.registerAsynchronousAppender(&appender);
        dispatcher.stop();
        dispatcher.unregisterAsynchronousAppender(&appender);
    }
    EXPECT_THAT(priorities,
                ElementsAre(THREAD_PRIORITY_NORMAL, THREAD_PRIORITY_LOWEST, THREAD_PRIORITY_HIGHEST));
}
