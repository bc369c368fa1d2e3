// What differs on Linux.

#include "TestSupport.h"

#include "log/appenders/FileAppender.h"
#include "log/async/AsynchronousDispatcher.h"
#include "platform/Directory.h"
#include "platform/Files.h"
#include "platform/OutputFile.h"
#include "platform/Process.h"
#include "zav-util/StandardError.h"
#include "zav-util/SystemInformation.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

/// What a file system refuses to do; 0 for what it does.
int renameError = 0;
int linkError = 0;

int fail(int error) {
    errno = error;
    return -1;
}

} // namespace

// They stand in the place of the system's.

int renameat2(int fromDirectory, const char* from, int toDirectory, const char* to, unsigned flags) noexcept {
    return renameError != 0
               ? fail(renameError)
               : static_cast<int>(syscall(SYS_renameat2, fromDirectory, from, toDirectory, to, flags));
}

int link(const char* from, const char* to) noexcept {
    return linkError != 0 ? fail(linkError) : linkat(AT_FDCWD, from, AT_FDCWD, to, 0);
}

TEST(Files, RenamingNeverOverwritesWhateverTheFileSystemLacks) {
    for (const auto& [lacksRename, lacksLink] : {std::pair(EINVAL, 0), {ENOSYS, EPERM}}) {
        const TemporaryDirectory directory;
        writeFile(directory / "a", "A");
        writeFile(directory / "b", "B");
        renameError = lacksRename;
        linkError = lacksLink;
        EXPECT_FALSE(Platform::renameFile(directory / "a", directory / "b"));
        EXPECT_EQ(readFile(directory / "a") + readFile(directory / "b"), "AB");
        EXPECT_TRUE(Platform::renameFile(directory / "a", directory / "c"));
        EXPECT_FALSE(fileExists(directory / "a"));
        EXPECT_EQ(readFile(directory / "c"), "A");
        EXPECT_FALSE(Platform::renameFile(directory / "missing", directory / "d"));
        renameError = EACCES; // no reason to try otherwise
        EXPECT_FALSE(Platform::renameFile(directory / "c", directory / "d"));
    }
}

namespace {

std::atomic<int> interruptions{0};

} // namespace

TEST(OutputFile, GoesOnAfterAnInterruptedOrAShortWrite) {
    const TemporaryDirectory directory;
    const std::string pipe = directory / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    struct sigaction action = {};
    action.sa_handler = [](int) { ++interruptions; };
    ASSERT_EQ(sigaction(SIGUSR1, &action, nullptr), 0);

    std::string received;
    std::thread reader([&, writer = pthread_self()] {
        std::ifstream stream(pipe);
        stream.peek(); // waits until the writer is at it
        // The first one ends a write with what the pipe took, the next ones end writes of nothing. They are
        // counted here, since the thread sanitizer puts the handler off until the writer is through.
        for (int i = 0; i < 1'000; ++i) {
            pthread_kill(writer, SIGUSR1);
            std::this_thread::yield();
        }
        received.assign(std::istreambuf_iterator<char>(stream), {});
    });
    std::string text;
    for (int i = 0; i < 100'000; ++i) { // more than the pipe takes
        text += std::to_string(i);
    }
    std::filesystem::create_symlink("pipe", directory / "link");
    Platform::OutputFile file;
    do {
        file.open(directory / "link", Platform::OutputFile::APPEND);
    } while (file.hasFailed()); // until the reader is there
    file.write(text);
    file.close();
    reader.join();
    EXPECT_GT(interruptions, 0);
    EXPECT_FALSE(file.hasFailed());
    EXPECT_TRUE(received == text);
}

namespace {

using Platform::FileRules;
using Platform::OutputFile;

constexpr OutputFile::Mode MODES[] = {OutputFile::TRUNCATE, OutputFile::APPEND, OutputFile::CREATE};
constexpr FileRules STRICT{std::nullopt, false};

bool canOpen(const std::string& path, OutputFile::Mode mode, const FileRules& rules) {
    OutputFile file;
    file.open(path, mode, rules);
    EXPECT_EQ(file.isOpen(), !file.hasFailed());
    return file.isOpen();
}

} // namespace

TEST(OutputFile, RefusesWhatIsNoFileAndLeavesItAlone) {
    const TemporaryDirectory directory;
    const std::string pipe = directory / "pipe";
    std::filesystem::create_symlink("pipe", directory / "link");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const bool hasReader : {false, true}) {
        const int reader = hasReader ? ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK) : -1;
        for (const OutputFile::Mode mode : MODES) {
            EXPECT_FALSE(canOpen(pipe, mode, FileRules()));
            EXPECT_FALSE(canOpen(pipe, mode, STRICT));
            EXPECT_FALSE(canOpen(directory / "link", mode, STRICT));
            EXPECT_EQ(canOpen(directory / "link", mode, FileRules()),
                      hasReader && mode != OutputFile::CREATE);
            EXPECT_FALSE(canOpen(directory.path(), mode, FileRules()));
            EXPECT_TRUE(canOpen("/dev/null", mode, FileRules()));
        }
        ::close(reader);
    }
    EXPECT_TRUE(canOpen("/dev/null", OutputFile::APPEND, STRICT));
}

TEST(OutputFile, KeepsWhatHasAppearedInTheNewFilesPlace) {
    const TemporaryDirectory directory;
    const std::string path = directory / "f";
    for (const std::optional<unsigned> permissions :
         {std::optional<unsigned>(), std::optional<unsigned>(0600)}) {
        writeFile(path, "foreign\n");
        EXPECT_FALSE(canOpen(path, OutputFile::CREATE, {permissions, false}));
        EXPECT_TRUE(canOpen(path, OutputFile::CREATE, {permissions, true}));
        EXPECT_EQ(readFile(path), "foreign\n");
        std::filesystem::remove(path);
        EXPECT_TRUE(canOpen(path, OutputFile::CREATE, {permissions, false}));
        std::filesystem::remove(path);
        for (const char* target : {"missing", "present"}) {
            writeFile(directory / "present", "foreign\n");
            std::filesystem::create_symlink(target, path);
            EXPECT_FALSE(canOpen(path, OutputFile::CREATE, {permissions, false}));
            EXPECT_FALSE(canOpen(path, OutputFile::CREATE, {permissions, true}));
            EXPECT_FALSE(fileExists(directory / "missing"));
            EXPECT_EQ(readFile(directory / "present"), "foreign\n");
            std::filesystem::remove(path);
        }
    }
}

TEST(OutputFile, RefusesAnotherUsersFileForRootWhereLinksAreNotFollowed) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root is refused such a file, and only root can make one";
    }
    const TemporaryDirectory directory;
    const std::string path = directory / "f";
    writeFile(path, "foreign\n");
    ASSERT_EQ(chown(path.c_str(), 1, 1), 0);
    EXPECT_FALSE(canOpen(path, OutputFile::APPEND, STRICT));
    EXPECT_FALSE(canOpen(path, OutputFile::TRUNCATE, STRICT));
    EXPECT_EQ(readFile(path), "foreign\n");
    EXPECT_TRUE(canOpen(path, OutputFile::TRUNCATE, FileRules()));
    EXPECT_EQ(readFile(path), "");
}

TEST(OutputFile, WritesToAPipeWhoseReaderHasLeftWithoutASignal) {
    const TemporaryDirectory directory;
    std::filesystem::create_symlink("pipe", directory / "link");
    ASSERT_EQ(mkfifo((directory / "pipe").c_str(), 0600), 0);
    const int reader = ::open((directory / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
    OutputFile file;
    file.open(directory / "link", OutputFile::APPEND);
    file.write("a");
    EXPECT_FALSE(file.hasFailed());
    ::close(reader);
    file.write("b"); // here the signal would end the test
    EXPECT_TRUE(file.hasFailed());
    sigset_t pending;
    ASSERT_EQ(sigpending(&pending), 0);
    EXPECT_FALSE(sigismember(&pending, SIGPIPE));
}

TEST(NoCancellation, PutsOffACancellationThatIsAskedForBeforeASystemCall) {
    const TemporaryDirectory directory;
    std::atomic<bool> isThrough{false};
    std::thread thread([&] {
        pthread_cancel(pthread_self());
        Platform::OutputFile file;
        file.open(directory / "a", Platform::OutputFile::APPEND);
        file.write("a");
        file.close();
        Util::writeErrorLine("cancelled");
        std::vector<std::string> names;
        Platform::listFiles(directory.path(), names);
        isThrough = true;
        pthread_testcancel();
        isThrough = false;
    });
    thread.join();
    EXPECT_TRUE(isThrough);
    EXPECT_EQ(readFile(directory / "a"), "a");
}

/// It runs once more as a program of another name.
TEST(Process, IsCalledByItsNameAlsoIfThatLooksLikeADeletedFile) {
    const std::string name = "odd (deleted)";
    if (Util::getProgramName() == name) {
        std::filesystem::remove(Platform::executablePath());
        EXPECT_EQ(Util::getProgramName(), name);
        return;
    }
    const TemporaryDirectory directory;
    std::filesystem::copy_file(Platform::executablePath(), directory / name);
    const std::string command = "'" + (directory / name) + "' --gtest_filter='Process.IsCalled*' >&2";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_FALSE(fileExists(directory / name)) << "it did not run under that name";
}

TEST(Process, HasANumberOfItsOwnInAForkedChild) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(Platform::rememberedProcessId() == getpid() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(FileAppender, ReportsALineThatAFullDiskDidNotTake) {
    const TemporaryDirectory directory;
    std::filesystem::create_symlink("/dev/full", directory / "f0");
    std::filesystem::create_directory(directory / "f1"); // keeps the link from being moved
    RecordingListener failures;
    LogManager::registerCommandListener("EXCEPTION", &failures);
    FileAppender appender("x", true, {}, directory.path(), "f", 3, 1000, Util::TimeUtils::Time());
    appender.output(makeMessage("a"));
    EXPECT_THAT(failures.arguments, ElementsAre(HasSubstr("Exception = outputFileStream_.fail()\n")));
}

TEST(AsynchronousDispatcher, GivesItsThreadTheConfiguredPriorityAsFarAsItMay) {
    const auto threadNice = [] { return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); };
    const int processNice = threadNice();
    std::vector<int> nices;
    CallingAppender appender([&](const LogMessage&) { nices.push_back(threadNice()); }, false);
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
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
    EXPECT_THAT(nices, ElementsAre(processNice, std::min(processNice + 10, 19), Le(processNice)));
}
