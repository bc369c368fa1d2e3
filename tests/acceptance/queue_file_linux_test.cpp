#include "LeavingProcess.h"

#include "log/LogContext.h"
#include "log/LogException.h"
#include "log/LogValues.h"
#include "zav-util/UtilException.h"

#include <future>
#include <set>
#include <sys/stat.h>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;
using Util::TimeUtils::Time;

namespace {

const std::string QUEUE = "zav.log.AsynchronousDispatcher.queueFile = DIR/queue\n";
const std::string SIZE = "zav.log.AsynchronousDispatcher.queueFileSize = ";

class QueueFileOfProgram : public LeavingProcess {
protected:
    std::string queuePath() const { return directory_ / "queue"; }

    /// The text of the exception that `init` throws.
    std::string refusalOf(const std::string& lines) {
        return textThrownBy<LogException>([&] { init(lines); });
    }

    static Logger& logger() { return LoggerFactory::getLogger("net"); }
};

} // namespace

TEST_F(QueueFileOfProgram, GivesTheNextProcessWhatWasLeft) {
    const std::string layout =
        "appender.a.layout = fields\nappender.a.fields = pid level logger place context text\n";
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    inProcess([&] {
        init(lazy(QUEUE + layout));
        const LogContext context("request", "r1");
        ZAV_LOGV_WARNING(logger(), "charged", "order", 17, "amount", 4.25);
        logger().info("bytes", 8, "app.cpp");
        const int pid = getpid();
        static_cast<void>(!write(pipe[1], &pid, sizeof pid));
    });
    int pid = 0;
    ASSERT_EQ(read(pipe[0], &pid, sizeof pid), static_cast<ssize_t>(sizeof pid));
    init(lazy(QUEUE + layout));
    logger().info("new", 9, "app.cpp");
    const LogStatistics statistics = LogManager::statistics();
    EXPECT_EQ(statistics.recovered, 2U);
    EXPECT_EQ(statistics.queued, 3U);
    EXPECT_EQ(statistics.delivered, 2U);
    LogManager::flush();
    const std::string log = readFile(directory_ / "a.log");
    const std::string left = std::to_string(pid);
    EXPECT_THAT(log, MatchesRegex(left +
                                  " WARNING net .*queue_file_linux_test.cpp:[0-9]+ request=r1 "
                                  "charged order=17 amount=4.25\n" +
                                  left + " INFO net app.cpp:8 request=r1 bytes\n" + std::to_string(getpid()) +
                                  " INFO net app.cpp:9 new\n"));
}

TEST_F(QueueFileOfProgram, KeepsWhatNoAppenderTakesAndGivesANewOneAll) {
    leave(lazy(QUEUE), {"1", "2"});
    init("appender.s = SimpleFileAppender\nappender.s.dir = DIR\nappender.s.file = s.log\n" + QUEUE);
    EXPECT_EQ(LogManager::statistics().recovered, 0U);
    LogManager::finish();
    init(lazy(QUEUE) + "appender.other = SimpleFileAppender\nappender.other.dir = DIR\n"
                       "appender.other.file = other.log\nappender.other.asynchronous = true\n");
    EXPECT_EQ(lastWordsOf("a.log"), std::vector<std::string>({"1", "2"}));
    EXPECT_EQ(lastWordsOf("other.log"), lastWordsOf("a.log"));
    LogManager::finish();
    EXPECT_FALSE(fileExists(directory_ / "s.log"));
}

TEST_F(QueueFileOfProgram, ComesOnceThroughAChainOfProcesses) {
    std::vector<std::string> all;
    for (int process = 0; process < 5; ++process) {
        all.push_back(std::to_string(process));
        leave(lazy(QUEUE), {all.back()});
    }
    inProcess([&] {
        init(lazy(QUEUE));
        logger().info("in the last round", 0, "");
        LogManager::finish();
    });
    init(lazy(QUEUE));
    all.emplace_back("round");
    EXPECT_EQ(lastWordsOf("a.log"), all);
    EXPECT_EQ(LogManager::statistics().recovered, 0U);
}

TEST_F(QueueFileOfProgram, BeginsALineOfItsOwnBehindATornOne) {
    leave(lazy(QUEUE), {"whole"});
    writeFile(directory_ / "a.log", "a line that the kill has to");
    init(lazy(QUEUE));
    EXPECT_THAT(readFile(directory_ / "a.log"), StartsWith("a line that the kill has to\n20"));
}

TEST_F(QueueFileOfProgram, IsUsedByOneProcessAtATime) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "it lets no forked child of several threads start one";
#endif
    init(lazy(QUEUE));
    // A child that is forked while the consumer starts may find the sanitizer's allocator locked for ever.
    logger().info("the first", 0, "");
    LogManager::flush();
    logger().info("of the parent", 0, "");
    const int status = inProcess([&] {
        logger().info("of the child", 0, ""); // its queue is in memory
        LogManager::flush();
        LogManager::finish();
        _exit(refusalOf(lazy(QUEUE)) == "The queue file " + queuePath() + " is in use." ? 7 : 8);
    });
    EXPECT_EQ(WEXITSTATUS(status), 7);
    LogManager::flush();
    EXPECT_EQ(lastWordsOf("a.log"), std::vector<std::string>({"first", "child", "parent"}));
}

TEST_F(QueueFileOfProgram, IsFreeWhenItsProcessIsDeadThoughAChildOfThatLives) {
    int end[2];
    ASSERT_EQ(pipe(end), 0);
    inProcess([&] {
        init(lazy(QUEUE));
        logger().info("left", 0, "");
        if (fork() == 0) {
            close(end[1]);
            char byte = 0;
            static_cast<void>(!read(end[0], &byte, 1)); // until the test is over
            _exit(0);
        }
    });
    init(lazy(QUEUE));
    EXPECT_EQ(lastWordsOf("a.log"), std::vector<std::string>({"left"}));
    close(end[1]);
}

TEST_F(QueueFileOfProgram, RefusesWhatIsNoneAndLeavesItAsItIs) {
    const std::string unreadable = "The queue file " + queuePath() + " cannot be read: ";
    writeFile(queuePath(), "somebody's letter");
    EXPECT_EQ(refusalOf(lazy(QUEUE)), unreadable + "It is not a queue file");
    EXPECT_EQ(readFile(queuePath()), "somebody's letter");

    std::filesystem::remove(queuePath());
    leave(lazy(QUEUE + SIZE + "64 KB\n"), {"a text to be damaged"});
    std::string bytes = readFile(queuePath());
    bytes[bytes.find("a text to be")] ^= 1;
    writeFile(queuePath(), bytes);
    EXPECT_EQ(refusalOf(lazy(QUEUE)), unreadable + "It is damaged");
    EXPECT_EQ(readFile(queuePath()), bytes);

    std::filesystem::remove(queuePath());
    std::filesystem::create_directory(queuePath());
    EXPECT_THAT(refusalOf(lazy(QUEUE)), StartsWith(unreadable));
    std::filesystem::remove(queuePath());
    const std::string elsewhere = "zav.log.AsynchronousDispatcher.queueFile = DIR/none/queue\n";
    EXPECT_EQ(refusalOf(lazy(elsewhere)),
              "The queue file " + (directory_ / "none/queue") + " cannot be read: No such file or directory");
}

TEST_F(QueueFileOfProgram, IsMadeWholeForItsUserAlone) {
    writeFile(queuePath(), ""); // an empty one counts as new
    const mode_t before = umask(0);
    init(lazy(QUEUE + SIZE + "100 KB\n"));
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(queuePath().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(status.st_size, 100 * 1024);
    EXPECT_GE(status.st_blocks * 512, status.st_size);
    EXPECT_FALSE(fileExists(queuePath() + ".new"));
}

TEST_F(QueueFileOfProgram, ChangesItsSizeAtAStartThatFindsNothingWaiting) {
    const auto sizeAfterStartWith = [this](const std::string& size) {
        inProcess([&] {
            init(lazy(QUEUE + SIZE + size + "\n"));
            logger().info("waits", 0, "");
            LogManager::flush();
        });
        return std::filesystem::file_size(queuePath()) / 1024;
    };
    leave(lazy(QUEUE + SIZE + "64 KB\n"), {"first"});
    EXPECT_EQ(sizeAfterStartWith("1 MB"), 64U);
    EXPECT_EQ(sizeAfterStartWith("1 MB"), 1024U);
    EXPECT_EQ(sizeAfterStartWith("128 KB"), 128U);
    EXPECT_EQ(lastWordsOf("a.log"), std::vector<std::string>({"first", "waits", "waits", "waits"}));
}

TEST_F(QueueFileOfProgram, ReportsASizeThatIsNoneAndTakesTheDefault) {
    for (const std::string size : {"10", "10 kB", "ten MB", "0 MB", "-1 MB"}) {
        StandardErrorCapture errors;
        std::filesystem::remove(queuePath());
        inProcess([&] { init(lazy(QUEUE + SIZE + size + "\n")); });
        EXPECT_EQ(errors.text(), "AsynchronousDispatcher::configure failure for option "
                                 "zav.log.AsynchronousDispatcher.queueFileSize. Exception: Can't convert " +
                                     size + " to a size\n");
        EXPECT_EQ(std::filesystem::file_size(queuePath()), 16U << 20U);
    }
}

TEST_F(QueueFileOfProgram, StaysAsItIsInAReload) {
    const std::string refusal = "The queue file cannot be changed by a reload.";
    const std::string lines = lazy(QUEUE + SIZE + "1 MB\n");
    init(lines);
    const auto refused = [this](const std::string& changed) {
        return textThrownBy<LogException>([&] { reload(changed + "logger.net.level = TRACE\n"); });
    };
    EXPECT_EQ(refused(lazy()), refusal);
    EXPECT_EQ(refused(lazy(QUEUE)), refusal);
    EXPECT_EQ(refused(lazy(QUEUE + SIZE + "2 MB\n")), refusal);
    EXPECT_EQ(refused(lazy("zav.log.AsynchronousDispatcher.queueFile = DIR/other\n" + SIZE + "1 MB\n")),
              refusal);
    EXPECT_NE(logger().getLevel(), Level::LEVEL_TRACE);
    reload(lines + "logger.net.level = TRACE\n");
    EXPECT_EQ(logger().getLevel(), Level::LEVEL_TRACE);
    LogManager::finish();
    init(lazy());
    EXPECT_EQ(refused(lazy(QUEUE)), refusal);
    reload(lazy(SIZE + "2 MB\n")); // without a queue file
}

TEST_F(QueueFileOfProgram, DiscardsTheOldestWhenItIsFullAndWhatDoesNotFitAtAll) {
    constexpr int COUNT = 2000;
    init(lazy(QUEUE + SIZE + "64 KB\nzav.log.AsynchronousDispatcher.maxQueueSize = -1\n"));
    StandardErrorCapture errors;
    for (int number = 0; number < COUNT; ++number) {
        logger().info(std::string(100, 'x') + ' ' + std::to_string(number), 0, "");
    }
    logger().info(std::string(100'000, 'y') + " giant", 0, "");
    LogManager::flush();
    std::vector<std::string> written = lastWordsOf("a.log");
    std::vector<std::string> shown = lastWordsIn(errors.text());
    const LogStatistics statistics = LogManager::statistics();
    EXPECT_EQ(statistics.queued, COUNT + 1U);
    EXPECT_EQ(statistics.delivered, written.size());
    EXPECT_EQ(statistics.discarded, shown.size());
    const auto isBefore = [](const std::string& a, const std::string& b) {
        return std::stoi(a) < std::stoi(b);
    };
    EXPECT_TRUE(std::is_sorted(written.begin(), written.end(), isBefore));
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "giant"), 1);
    std::set<std::string> all(written.begin(), written.end());
    all.insert(shown.begin(), shown.end());
    EXPECT_EQ(all.size(), COUNT + 1U);
}

TEST_F(QueueFileOfProgram, WaitsForRoomIfThatIsConfigured) {
    constexpr int COUNT = 2000;
    init(lazy(QUEUE + SIZE +
              "64 KB\nzav.log.AsynchronousDispatcher.maxQueueSize = -1\n"
              "zav.log.AsynchronousDispatcher.overflow = block\n"));
    for (int number = 0; number < COUNT; ++number) {
        logger().info(std::string(100, 'x') + ' ' + std::to_string(number), 0, "");
    }
    LogManager::flush();
    EXPECT_EQ(LogManager::statistics().discarded, 0U);
    EXPECT_EQ(lastWordsOf("a.log").size(), static_cast<std::size_t>(COUNT));
}

/// More threads than blocks in the file: the remaining ones share a reserved ring.
TEST_F(QueueFileOfProgram, HasRoomForManyThreadsThatKeepTheirMemory) {
    constexpr int THREADS = 50;
    constexpr int COUNT = 40;
    init(lazy(QUEUE + SIZE + "64 KB\nzav.log.AsynchronousDispatcher.maxQueueSize = -1\n"));
    std::promise<void> end;
    const std::shared_future<void> ended = end.get_future().share();
    std::vector<std::promise<void>> logged(THREADS);
    std::vector<std::thread> threads;
    for (std::promise<void>& done : logged) {
        threads.emplace_back([&] {
            for (int message = 0; message < COUNT; ++message) {
                logger().info(std::string(100, 'x'), 0, "");
            }
            done.set_value();
            ended.wait();
        });
        done.get_future().wait();
        LogManager::flush();
    }
    EXPECT_EQ(LogManager::statistics().discarded, 0U);
    EXPECT_EQ(lastWordsOf("a.log").size(), static_cast<std::size_t>(THREADS * COUNT));
    end.set_value();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(QueueFileOfProgram, LeavesRoomForThoseWhoRecoverAFullOne) {
    const std::string full = QUEUE + SIZE + "64 KB\nzav.log.AsynchronousDispatcher.maxQueueSize = -1\n";
    inProcess([&] {
        init("appender.none = SimpleFileAppender\nappender.none.dir = DIR\nappender.none.file = n.log\n"
             "appender.none.asynchronous = true\nlogger.root.level = INFO\n"
             "appender.none.filters = nobody\nzav.log.AsynchronousDispatcher.waitingPeriod = 3600\n" +
             full);
        close(STDERR_FILENO);
        for (int number = 0; number < 1000; ++number) {
            logger().info(std::string(100, 'x') + ' ' + std::to_string(number), 0, "");
        }
    });
    init(lazy(full));
    const std::vector<std::string> words = lastWordsOf("a.log");
    logger().info("and on", 0, "");
    LogManager::flush();
    EXPECT_EQ(LogManager::statistics().recovered, words.size());
    EXPECT_EQ(lastWordsOf("a.log").back(), "on");
}
