#include "EndedProcess.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <pthread.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

std::atomic<bool> priorityFails{false};

} // namespace

// Replaces the system's function, to simulate a failure that a test cannot cause.
extern "C" __attribute__((visibility("default"))) int setpriority(__priority_which_t, id_t, int) noexcept {
    errno = EINVAL;
    return priorityFails ? -1 : 0;
}

namespace {

class Drill : public EndedProcess {};
class DrillInProcess : public Application {};

/// Limits a directory to a few dozen lines: by a separate file system, or, if the test may not mount one, by
/// a limit on the size of each file.
class LimitedSpace {
public:
    explicit LimitedSpace(const std::string& directory) {
        std::signal(SIGXFSZ, SIG_IGN);
        const bool mounted = unshare(CLONE_NEWNS) == 0 &&
                             mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             mount("tmpfs", directory.c_str(), "tmpfs", 0, "size=8k") == 0;
        std::cout << (mounted ? "a small file system\n" : "a limit for each file\n");
        directory_ = mounted ? directory : "";
        const rlimit limit = {mounted ? RLIM_INFINITY : 8192, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~LimitedSpace() {
        const rlimit none = {RLIM_INFINITY, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &none);
        if (!directory_.empty()) {
            umount(directory_.c_str());
        }
    }
    LimitedSpace(const LimitedSpace&) = delete;
    LimitedSpace& operator=(const LimitedSpace&) = delete;

private:
    std::string directory_;
};

void* logUntilCancelled(void*) {
    while (true) {
        LoggerFactory::getLogger("net").error("cancelled", 0, "");
        pthread_testcancel();
    }
}

} // namespace

TEST_F(Drill, AKilledProcessHasWrittenEachLineThatACallReturnedFor) {
    EXPECT_NE(run(ZAV_LOG_DRILL_PROGRAM, "kill"), 0);
    int returned[4] = {};
    std::ifstream(directory_ / "returned").read(reinterpret_cast<char*>(returned), sizeof returned);
    EXPECT_GE(returned[3], 500);
    const std::string text = readFile(directory_ / "sync0");
    EXPECT_EQ(text.back(), '\n');
    int last[4] = {};
    for (const std::string& word : lastWordsIn(text)) {
        const std::size_t colon = word.find(':');
        ASSERT_EQ(std::stoi(word.substr(colon + 1)), ++last[std::stoi(word.substr(0, colon))]) << word;
    }
    for (int thread = 0; thread < 4; ++thread) {
        EXPECT_GE(last[thread], returned[thread]) << thread;
    }
}

TEST_F(Drill, AForkStormLeavesEveryChildAlive) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer does not follow forks of a process with threads";
#elif defined(__SANITIZE_ADDRESS__)
    // If another thread allocates during the fork, the child hangs when it starts a thread.
    GTEST_SKIP() << "the address sanitizer's own allocator is locked in such a child";
#endif
    std::filesystem::create_directory(directory_ / "child");
    EXPECT_EQ(run(ZAV_LOG_DRILL_PROGRAM, "fork"), 0) << errors();
}

namespace {

std::atomic<bool> forkHasBegun{false};

/// A standard error that is in use while a fork begins, and then creates a logger.
class BufferDuringFork : public std::stringbuf {
public:
    std::atomic<bool> isInUse{false};

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        isInUse = true;
        while (!forkHasBegun) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // the fork reaches the library's locks
        LoggerFactory::getLogger("made.meanwhile");
        return std::stringbuf::xsputn(text, size);
    }
};

} // namespace

TEST_F(DrillInProcess, AForkBearsAStandardErrorThatMakesALogger) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers lock their allocators during a fork";
#endif
    ASSERT_TRUE(init("appender.queued = SimpleFileAppender\n"
                     "appender.queued.asynchronous = true\n"
                     "appender.queued.dir = DIR\n"
                     "zav.log.AsynchronousDispatcher.maxQueueSize = 1\n"));
    BufferDuringFork buffer;
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    pthread_atfork([] { forkHasBegun = true; }, nullptr, nullptr); // registered last, and so called first
    std::thread logging([] { LoggerFactory::getLogger("net").error("shown", 0, ""); });
    while (!buffer.isInUse) {
        std::this_thread::yield();
    }
    const pid_t child = fork(); // a hang here is a failure
    if (child == 0) {
        _exit(EXIT_SUCCESS);
    }
    logging.join();
    std::cerr.rdbuf(before);
    int status = EXIT_FAILURE;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, EXIT_SUCCESS);
    EXPECT_THAT(buffer.str(), HasSubstr(" shown\n"));
}

TEST_F(Drill, AForkNeedsNoMemory) {
    EXPECT_EQ(run(ZAV_LOG_DRILL_PROGRAM, "no-memory"), 0) << errors();
}

/// It returns in both processes.
TEST_F(DrillInProcess, AnAppenderThatForksLeavesTheMessageToTheParent) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers lock their allocators during a fork";
#endif
    Logger& root = LoggerFactory::getRootLogger();
    pid_t child = -1;
    CallingAppender forking([&child](const LogMessage& message) {
        if (message.getText() == "once") {
            child = fork();
        }
    });
    root.addAppender(&forking);
    ASSERT_TRUE(init("appender.after = SimpleFileAppender\nappender.after.dir = DIR\n"
                     "appender.queued = SimpleFileAppender\n"
                     "appender.queued.asynchronous = true\n"
                     "appender.queued.dir = DIR\n"));
    root.error("once", 0, "");
    if (child == 0) {
        root.error("child", 0, "");
        _exit(LogManager::flush() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = EXIT_FAILURE;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, EXIT_SUCCESS);
    root.removeAppender(&forking);
    EXPECT_TRUE(LogManager::flush());
    for (const char* file : {"after", "queued"}) {
        EXPECT_THAT(lastWordsOf(file), UnorderedElementsAre("once", "child")) << file;
    }
}

TEST_F(DrillInProcess, AFullDiskCostsOnlyWhatIsReported) {
    constexpr std::size_t MESSAGES = 500;
    std::size_t reports = 0;
    CallingListener listener([&reports](const std::string&) { ++reports; });
    const std::string room = directory_ / "room";
    std::filesystem::create_directory(room);
    const LimitedSpace little(room);
    const std::uint64_t failedBefore = LogManager::statistics().failed;
    const std::string lines = "appender.file = FileAppender\nappender.file.dir = DIR/room\n";
    ASSERT_TRUE(init(lines));
    LogManager::registerCommandListener("EXCEPTION", &listener);
    for (std::size_t i = 0; i < MESSAGES; ++i) {
        LoggerFactory::getLogger("net").error("message", 0, "");
    }
    const std::string text = readFile(room + "/file0");
    EXPECT_GT(reports, 0U);
    EXPECT_EQ(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')), MESSAGES - reports);
    EXPECT_EQ(LogManager::statistics().failed - failedBefore, reports);

    LogManager::finish();
    std::filesystem::remove(room + "/file0");
    ASSERT_TRUE(init(lines));
    LoggerFactory::getLogger("net").error("again", 0, "");
    EXPECT_THAT(lastWordsOf("room/file0"), ElementsAre("again"));
    LogManager::finish();
}

/// The address sanitizer mistakes the unwinding of a cancelled thread for a stack overflow.
TEST_F(DrillInProcess, ACancelledThreadLeavesWholeLinesAndALogThatGoesOn) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer does not follow the cancellation of a thread";
#endif
    ASSERT_TRUE(init("appender.out = StdoutAppender\n"
                     "appender.file = FileAppender\nappender.file.dir = DIR\n"
                     "appender.simple = SimpleFileAppender\nappender.simple.dir = DIR\n"));
    const std::string sent = "cancelled\n";
    testing::internal::CaptureStdout();
    for (int round = 0; round < 20; ++round) {
        const std::size_t before = linesOf("simple").size();
        pthread_t thread;
        ASSERT_EQ(pthread_create(&thread, nullptr, logUntilCancelled, nullptr), 0);
        while (linesOf("simple").size() < before + 3) {
            std::this_thread::yield();
        }
        pthread_cancel(thread);
        pthread_join(thread, nullptr);
    }
    LoggerFactory::getLogger("net").error("after", 0, "");
    const std::vector<std::string> written = lastWordsIn(testing::internal::GetCapturedStdout());
    EXPECT_EQ(written.back(), "after");
    EXPECT_EQ(lastWordsOf("simple"), written);
    EXPECT_EQ(lastWordsOf("file0"), written);
}

TEST_F(DrillInProcess, AConsumerThatCannotHaveItsPriorityEndsAlone) {
    const std::string lines = "appender.queued = SimpleFileAppender\n"
                              "appender.queued.asynchronous = true\n"
                              "appender.queued.dir = DIR\n"
                              "zav.log.AsynchronousDispatcher.waitingPeriod = 3600\n"
                              "zav.log.AsynchronousDispatcher.overflow = block\n"
                              "zav.log.AsynchronousDispatcher.maxQueueSize = 4\n";
    priorityFails = true;
    StandardErrorCapture errors;
    ASSERT_TRUE(init(lines + "zav.log.AsynchronousDispatcher.priority = 30\n"));
    for (int number = 0; number < 10; ++number) {
        LoggerFactory::getLogger("net").error(std::to_string(number), 0, "");
    }
    EXPECT_FALSE(LogManager::flush());
    LogManager::finish();
    const std::string shown = errors.text();
    EXPECT_THAT(shown, HasSubstr("IceUtil::Thread::run(): uncaught exception: "));
    EXPECT_THAT(shown, HasSubstr("Message queue size reached. Discarding oldest log message: "));
    priorityFails = false;
    ASSERT_TRUE(init(lines));
    EXPECT_TRUE(LogManager::flush());
    EXPECT_THAT(lastWordsOf("queued"), ElementsAre("7", "8", "9"));
}

TEST_F(DrillInProcess, TheConsumerTakesNoSignalsOfTheApplication) {
    ASSERT_TRUE(init("appender.queued = SimpleFileAppender\n"
                     "appender.queued.asynchronous = true\n"
                     "appender.queued.dir = DIR\n"));
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    kill(getpid(), SIGTERM); // any thread that does not block it would end the process
    int signal = 0;
    sigwait(&signals, &signal);
    EXPECT_EQ(signal, SIGTERM);
}
