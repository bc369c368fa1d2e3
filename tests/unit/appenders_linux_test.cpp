// Linux-specific behaviour of the file appenders.

#include "TestClock.h"
#include "TestSupport.h"

#include "log/LogLine.h"
#include "log/appenders/AppenderFactory.h"
#include "platform/Process.h"

#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;
using namespace Util::TimeUtils;

namespace {

class FileSettings : public Test {
protected:
    using Settings = std::map<std::string, std::string>;

    void SetUp() override { LogManager::registerCommandListener("EXCEPTION", &failures_); }

    template <typename Builder>
    std::unique_ptr<Appender> make(Settings settings) const {
        settings.insert({{"dir", directory_.path()}, {"file", "f"}});
        Util::Properties properties;
        for (const auto& [key, value] : settings) {
            properties["appender.x." + key] = value;
        }
        return std::unique_ptr<Appender>(DefaultAppenderFactory<Builder>().create(properties, "x"));
    }

    static std::string line(const std::string& text) { return formatLogLine(makeMessage(text)) + "\n"; }
    static void passTime(Time time) { setClock(Time::now() + time); }

    static std::vector<std::string> linesOf(const std::string& text) {
        std::istringstream stream(text);
        std::vector<std::string> lines;
        for (std::string one; std::getline(stream, one);) {
            lines.push_back(one);
        }
        return lines;
    }

    std::string file(const std::string& index) const { return directory_ / ("f" + index); }
    std::string content(const std::string& index) const { return readFile(file(index)); }

    mode_t modeOf(const std::string& index) const {
        struct stat status = {};
        EXPECT_EQ(stat(file(index).c_str(), &status), 0);
        return status.st_mode & 0777U;
    }

    /// The last failure's reason; clears the recorded failures.
    std::string failure() {
        const std::string report = failures_.arguments.empty() ? "\n= none\n" : failures_.arguments.back();
        failures_.arguments.clear();
        const std::string::size_type begin = report.find("= ") + 2;
        return report.substr(begin, report.find('\n', begin) - begin);
    }

    const TemporaryDirectory directory_;
    RecordingListener failures_;
};

/// Limits the size of files, to simulate a full disk: a write is then short.
void limitFileSize(rlim_t size) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    limit.rlim_cur = size;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

const std::string FAILED = "outputFileStream_.fail()";

} // namespace

TEST_F(FileSettings, RecoveryEndsTheLineThatAFullDiskHasTorn) {
    const auto appender = make<FileAppenderBuilder>({{"recovery", "30 sec"}});
    const std::string first = line("a");
    const std::string torn = line("torn");
    appender->output(makeMessage("a"));
    limitFileSize(first.size() + 10);
    appender->output(makeMessage("torn"));
    EXPECT_EQ(failure(), FAILED);
    limitFileSize(RLIM_INFINITY);
    passTime(Time(29, SEC));
    appender->output(makeMessage("lost"));
    EXPECT_EQ(failure(), FAILED);
    passTime(Time(1, SEC));
    const std::string last = line("b");
    appender->output(makeMessage("b"));
    EXPECT_EQ(content("0"), first + torn.substr(0, 10) + "\n" + last);
    EXPECT_EQ(failure(), "none");
}

TEST_F(FileSettings, ASimpleFileHasNoLineBehindATornOne) {
    writeFile(file(""), "cut by a crash");
    const auto appender = make<SimpleFileAppenderBuilder>({{"layout", "plain"}});
    std::string expected = "cut by a crash\n" + line("a");
    appender->output(makeMessage("a"));
    EXPECT_EQ(content(""), expected);
    limitFileSize(expected.size() + 10);
    expected += line("torn").substr(0, 10) + "\n";
    appender->output(makeMessage("torn"));
    limitFileSize(RLIM_INFINITY);
    expected += line("b");
    appender->output(makeMessage("b"));
    EXPECT_EQ(content(""), expected);
}

TEST_F(FileSettings, RecoveryContinuesWhatStandsInTheFilesPlaceAndShiftsNothing) {
    const auto appender =
        make<FileAppenderBuilder>({{"recovery", "1 min"}, {"fileMaxSize", "1"}, {"fileMaxSizeUnit", "KB"}});
    appender->output(makeMessage("a"));
    writeFile(file("1"), "older\n");
    std::filesystem::rename(file("0"), file("moved"));
    writeFile(file("0"), "foreign");
    const std::string inTheOldFile = content("moved") + line("b");
    appender->output(makeMessage("b"));
    EXPECT_EQ(content("moved"), inTheOldFile);
    passTime(Time(1, MIN));
    const std::string continued = "foreign\n" + line("c");
    appender->output(makeMessage("c"));
    EXPECT_EQ(content("0"), continued);

    std::filesystem::remove(file("0"));
    std::filesystem::create_directory(file("0"));
    for (int period = 0; period < 2; ++period) {
        passTime(Time(1, MIN));
        appender->output(makeMessage("lost"));
        EXPECT_EQ(failure(), "Unable to open the file: " + file("0"));
        appender->output(makeMessage("lost"));
        EXPECT_EQ(failure(), FAILED);
    }
    EXPECT_EQ(content("1"), "older\n");

    std::filesystem::remove(file("0"));
    writeFile(file("0"), std::string(1000, 'x') + "\n");
    passTime(Time(1, MIN));
    appender->output(makeMessage("d")); // does not fit any more
    EXPECT_EQ(content("0"), line("d"));
    EXPECT_EQ(content("1").size(), 1001U);
    EXPECT_EQ(content("2"), "older\n");
}

TEST_F(FileSettings, ModeIsThatOfFilesThatAreMadeWhateverTheMask) {
    umask(077);
    make<SimpleFileAppenderBuilder>({{"file", "f-made"}, {"fileMode", "666"}})->output(makeMessage("a"));
    EXPECT_EQ(modeOf("-made"), 0666U);
    make<SimpleFileAppenderBuilder>({{"file", "f-bad"}, {"fileMode", "680"}})->output(makeMessage("a"));
    EXPECT_EQ(modeOf("-bad"), 0600U);
    std::filesystem::create_symlink("f-target", file("-link"));
    make<SimpleFileAppenderBuilder>({{"file", "f-link"}, {"fileMode", "640"}})->output(makeMessage("a"));
    EXPECT_EQ(modeOf("-target"), 0640U);

    std::filesystem::create_directory(file("1")); // prevents the live file from being renamed
    writeFile(file("0"), "");
    const auto appender = make<FileAppenderBuilder>({{"fileMode", "640"}});
    appender->output(makeMessage("a"));
    EXPECT_EQ(modeOf("0"), 0600U);
    std::filesystem::remove(file("0"));
    make<FileAppenderBuilder>({{"fileMode", "640"}})->output(makeMessage("a"));
    EXPECT_EQ(modeOf("0"), 0640U);
    EXPECT_EQ(umask(077), 077U);
}

TEST_F(FileSettings, LinksAreAnErrorWhereTheyAreNotFollowed) {
    for (const char* target : {"missing", "f-present"}) {
        writeFile(file("-present"), "");
        std::filesystem::create_symlink(target, file(""));
        make<SimpleFileAppenderBuilder>({{"followLinks", "false"}})->output(makeMessage("a"));
        EXPECT_THAT(failure(), StartsWith("Failed to open file"));
        make<SimpleFileAppenderBuilder>({{"followLinks", "false"}, {"fileMode", "600"}})
            ->output(makeMessage("a"));
        EXPECT_THAT(failure(), StartsWith("Failed to open file"));
        EXPECT_FALSE(fileExists(directory_ / "missing"));
        EXPECT_EQ(content("-present"), "");
        std::filesystem::remove(file(""));
    }
}

TEST_F(FileSettings, AForkedChildLeavesTheRotationToItsParent) {
    const std::map<std::string, std::string> rotatesAlways = {{"fileMaxSize", "1"}, {"fileMaxSizeUnit", "B"}};
    const auto appender = make<FileAppenderBuilder>(rotatesAlways);
    const std::string parents = line("parent");
    appender->output(makeMessage("parent"));
    const pid_t child = fork();
    if (child == 0) {
        appender->output(makeMessage("inherited"));
        make<FileAppenderBuilder>(rotatesAlways)->output(makeMessage("made"));
        _exit(0);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(content("0"), parents + line("inherited") + line("made"));
    EXPECT_FALSE(fileExists(file("1")));
    appender->output(makeMessage("parent"));
    EXPECT_EQ(content("0"), parents);
    EXPECT_EQ(content("1"), parents + line("inherited") + line("made"));
}

TEST_F(FileSettings, AForkedChildTakesTheSeriesOverWhenItsParentHasEnded) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t parent = fork();
    if (parent == 0) {
        const auto appender = make<FileAppenderBuilder>({{"fileMaxSize", "1"}, {"fileMaxSizeUnit", "B"}});
        appender->output(makeMessage("parent"));
        const pid_t self = getpid();
        if (fork() == 0) {
            while (Platform::isProcessAlive(self)) {
                std::this_thread::yield();
            }
            appender->output(makeMessage("child"));
        }
        _exit(0);
    }
    close(ends[1]);
    char nothing = 0;
    EXPECT_EQ(read(ends[0], &nothing, 1), 0);       // until the child has ended
    ASSERT_EQ(waitpid(parent, nullptr, 0), parent); // not reaped until now
    EXPECT_EQ(content("0"), line("child"));
    EXPECT_EQ(content("1"), line("parent"));
}

TEST_F(FileSettings, AForkedChildTakesTheSeriesOverWhenItsParentIsThroughWithIt) {
    auto appender = make<FileAppenderBuilder>({{"fileMaxSize", "1"}, {"fileMaxSizeUnit", "B"}});
    appender->output(makeMessage("parent"));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[1]);
        char nothing = 0;
        static_cast<void>(!read(ends[0], &nothing, 1)); // until the parent's appender is destroyed
        appender->output(makeMessage("first"));
        appender->output(makeMessage("second"));
        _exit(0);
    }
    appender.reset();
    close(ends[0]);
    close(ends[1]);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(content("0"), line("second"));
    EXPECT_EQ(content("1"), line("first"));
    EXPECT_EQ(content("2"), line("parent"));
    appender = make<FileAppenderBuilder>({{"fileMaxSize", "1"}, {"fileMaxSizeUnit", "B"}});
    appender->output(makeMessage("parent again"));
    EXPECT_EQ(content("0"), line("parent again"));
}

TEST_F(FileSettings, AForkedChildInAnotherContainerLeavesTheRotationToItsParent) {
    const pid_t parent = fork();
    if (parent == 0) {
        const auto appender = make<FileAppenderBuilder>({{"fileMaxSize", "1"}, {"fileMaxSizeUnit", "B"}});
        appender->output(makeMessage("parent"));
        const bool isApart = unshare(CLONE_NEWUSER | CLONE_NEWPID) == 0 || unshare(CLONE_NEWPID) == 0;
        if (!isApart) {
            _exit(EXIT_FAILURE);
        }
        const pid_t child = fork();
        if (child == 0) {
            appender->output(makeMessage("child"));
            _exit(0);
        }
        waitpid(child, nullptr, 0);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(parent, &status, 0), parent);
    if (status != 0) {
        GTEST_SKIP() << "containers are not allowed here";
    }
    EXPECT_EQ(content("0"), line("parent") + line("child"));
}

TEST_F(FileSettings, WhatChildrenWriteBeforeTheirParentStaysInTheLiveFile) {
    const auto appender = make<FileAppenderBuilder>({{"fileNumber", "0"}});
    for (int children = 0; children < 2; ++children) {
        const pid_t child = fork();
        if (child == 0) {
            appender->output(makeMessage("child"));
            _exit(0);
        }
        ASSERT_EQ(waitpid(child, nullptr, 0), child);
    }
    appender->output(makeMessage("parent"));
    EXPECT_THAT(linesOf(content("0")),
                ElementsAre(EndsWith(" child"), EndsWith(" child"), EndsWith(" parent")));
}

TEST_F(FileSettings, AForkedChildFollowsTheLiveFileThatItsParentMoves) {
    const auto appender =
        make<FileAppenderBuilder>({{"fileNumber", "0"}, {"fileMaxSize", "200"}, {"fileMaxSizeUnit", "B"}});
    appender->output(makeMessage("a"));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        char moved = 0;
        appender->output(makeMessage(read(ends[0], &moved, 1) == 1 ? "child" : "not told"));
        _exit(0);
    }
    appender->output(makeMessage(std::string(150, 'b'))); // deletes the file that the child has open
    ASSERT_EQ(write(ends[1], "m", 1), 1);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_THAT(linesOf(content("0")), ElementsAre(EndsWith("bbb"), EndsWith(" child")));
}

TEST_F(FileSettings, AForkedChildFollowsTheNextAppenderOfItsParent) {
    const Settings rotatesAlways = {{"fileMaxSize", "1"}, {"fileMaxSizeUnit", "B"}};
    auto appender = make<FileAppenderBuilder>(rotatesAlways);
    appender->output(makeMessage("a"));
    int toChild[2];
    int toParent[2];
    ASSERT_EQ(pipe(toChild) + pipe(toParent), 0);
    const pid_t child = fork();
    if (child == 0) {
        char moved = 0;
        appender->output(makeMessage("before"));
        const bool isTold = write(toParent[1], "w", 1) == 1 && read(toChild[0], &moved, 1) == 1;
        appender->output(makeMessage(isTold ? "after" : "not told"));
        _exit(0);
    }
    char written = 0;
    ASSERT_EQ(read(toParent[0], &written, 1), 1);
    appender.reset();
    appender = make<FileAppenderBuilder>(rotatesAlways);
    appender->output(makeMessage("b"));
    ASSERT_EQ(write(toChild[1], "m", 1), 1);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(content("1"), line("a") + line("before"));
    EXPECT_EQ(content("0"), line("b") + line("after"));
}

TEST_F(FileSettings, AChildThatTakesOverASeriesWithoutAFileBeginsItAsItsParentWould) {
    writeFile(file("0"), "earlier run\n");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t parent = fork();
    if (parent == 0) {
        const auto appender = make<FileAppenderBuilder>({});
        const pid_t self = getpid();
        if (fork() == 0) {
            while (Platform::isProcessAlive(self)) {
                std::this_thread::yield();
            }
            appender->output(makeMessage("child"));
        }
        _exit(0);
    }
    ASSERT_EQ(waitpid(parent, nullptr, 0), parent);
    close(ends[1]);
    char nothing = 0;
    EXPECT_EQ(read(ends[0], &nothing, 1), 0); // until the child has ended
    EXPECT_EQ(content("1"), "earlier run\n");
    EXPECT_THAT(linesOf(content("0")), ElementsAre(EndsWith(" child")));
}

TEST_F(FileSettings, FilesStayInTheFolderThatWasMeantWhenTheAppenderWasMade) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory_.path());
    std::filesystem::create_directory("logs");
    const auto simple = make<SimpleFileAppenderBuilder>({{"dir", "logs"}, {"file", "s"}});
    const auto rotating =
        make<FileAppenderBuilder>({{"dir", "logs"}, {"fileMaxSize", "1"}, {"fileMaxSizeUnit", "B"}});
    std::filesystem::current_path(before);
    for (int messages = 0; messages < 2; ++messages) {
        simple->output(makeMessage("a"));
        rotating->output(makeMessage("a"));
    }
    EXPECT_EQ(failure(), "none");
    EXPECT_EQ(linesOf(readFile(directory_ / "logs/s")).size(), 2U);
    EXPECT_EQ(linesOf(readFile(directory_ / "logs/f0") + readFile(directory_ / "logs/f1")).size(), 2U);

    std::filesystem::remove_all(directory_ / "logs"); // messages show the path as configured
    simple->output(makeMessage("b"));
    EXPECT_THAT(failure(), StartsWith("Failed to open file logs/s. "));
    rotating->output(makeMessage("b"));
    EXPECT_EQ(failure(), "Unable to open the file: logs/f0");
}

TEST_F(FileSettings, AnEmptyFolderIsTheRoot) {
    const std::string inRoot = directory_.path().substr(1) + "/f";
    make<FileAppenderBuilder>({{"dir", ""}, {"file", inRoot}})->output(makeMessage("a"));
    make<SimpleFileAppenderBuilder>({{"dir", ""}, {"file", inRoot + "-s"}})->output(makeMessage("a"));
    EXPECT_EQ(failure(), "none");
    EXPECT_EQ(linesOf(content("0") + content("-s")).size(), 2U);
}

TEST_F(FileSettings, NothingThatStandsInAFilesPlaceStopsTheProgram) {
    for (const char* follows : {"true", "false"}) {
        ASSERT_EQ(mkfifo(file("").c_str(), 0600), 0);
        make<SimpleFileAppenderBuilder>({{"followLinks", follows}})->output(makeMessage("a"));
        EXPECT_THAT(failure(), StartsWith("Failed to open file"));
        std::filesystem::create_directory(file("1")); // prevents the pipe from being renamed
        std::filesystem::rename(file(""), file("0"));
        make<FileAppenderBuilder>({{"followLinks", follows}})->output(makeMessage("a"));
        EXPECT_EQ(failure(), "Unable to open the file: " + file("0"));
        std::filesystem::remove(file("0"));
        std::filesystem::remove(file("1"));
    }
}

/// The child can log, even with the appender whose writing thread does not exist in it.
TEST_F(FileSettings, AForkDoesNotWaitForAWriteThatDoesNotEnd) {
    const std::string pipe = directory_ / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_EQ(symlink(pipe.c_str(), file("").c_str()), 0);
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    const int capacity = fcntl(reader, F_GETPIPE_SZ);
    const std::string text(2 * static_cast<std::size_t>(capacity), 'x');
    const auto appender = make<SimpleFileAppenderBuilder>({});

    std::thread writer([&] { appender->output(makeMessage(text)); });
    std::size_t arrived = 0;
    const auto readOn = [&arrived, reader] {
        std::vector<char> part(65536);
        const ssize_t size = read(reader, part.data(), part.size());
        arrived += size > 0 ? static_cast<std::size_t>(size) : 0;
        return size > 0;
    };
    for (int waiting = 0; waiting < capacity;) {
        ioctl(reader, FIONREAD, &waiting);
    }

    const pid_t child = fork(); // a hang here is a failure
    if (child == 0) {
        while (arrived < text.size()) { // so that the parent's write ends, and the next one has room
            readOn();
        }
        appender->output(makeMessage("child"));
        _exit(failures_.arguments.empty() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    writer.join();
    appender->output(makeMessage("parent"));
    while (readOn()) {
    }
    close(reader);
    EXPECT_TRUE(failures_.arguments.empty());
}

TEST_F(FileSettings, NoFileTakesThePlaceOfAClosedStandardStream) {
    const pid_t child = fork();
    if (child == 0) {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            close(stream);
        }
        const auto appender = make<FileAppenderBuilder>({});
        appender->output(makeMessage("a"));
        bool isTaken = false;
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            isTaken = fcntl(stream, F_GETFD) >= 0 || isTaken;
        }
        _exit(isTaken ? EXIT_FAILURE : EXIT_SUCCESS);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(content("0"), line("a"));
}

TEST_F(FileSettings, ALimitOfSizeIsAFailedWriteAndNoSignal) {
    const pid_t child = fork();
    if (child == 0) {
        limitFileSize(10);
        std::signal(SIGXFSZ, SIG_DFL);
        make<FileAppenderBuilder>({})->output(makeMessage("a"));
        make<SimpleFileAppenderBuilder>({{"file", "s"}})->output(makeMessage("a"));
        sigset_t pending;
        const bool isLeft = sigpending(&pending) != 0 || sigismember(&pending, SIGXFSZ) == 1;
        _exit(isLeft || failures_.arguments.size() != 1 ? EXIT_FAILURE
                                                        : EXIT_SUCCESS); // the single file reports no failure
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(content("0").size(), 10U);
    EXPECT_EQ(readFile(directory_ / "s").size(), 10U);
}

TEST_F(FileSettings, TwoWritersLeaveNoHoles) {
    const auto appender = make<FileAppenderBuilder>({});
    appender->output(makeMessage("a"));
    writeFile(file("0"), "emptied\n");
    const std::string expected = "emptied\n" + line("b");
    appender->output(makeMessage("b"));
    EXPECT_EQ(content("0"), expected);
}
