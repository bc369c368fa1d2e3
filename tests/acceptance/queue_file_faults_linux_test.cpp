// What may go wrong with a queue file: failing appenders, lack of memory, forks, and changes by others.

#include "LeavingProcess.h"

#include "log/Appender.h"
#include "log/AppenderOptions.h"
#include "log/LogException.h"
#include "log/LogFormat.h"
#include "log/LogMessage.h"

#include <atomic>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

const std::string QUEUE = "zav.log.AsynchronousDispatcher.queueFile = DIR/queue\n";

class QueueFileInTrouble : public LeavingProcess {
protected:
    std::string queuePath() const { return directory_ / "queue"; }

    static Logger& logger() { return LoggerFactory::getLogger("net"); }

    static std::string appender(const std::string& name, const std::string& folder, const std::string& file) {
        return "appender." + name + " = SimpleFileAppender\nappender." + name + ".dir = " + folder +
               "\nappender." + name + ".file = " + file + "\nappender." + name + ".asynchronous = true\n";
    }

    mode_t modeOfFile() const {
        struct stat status = {};
        EXPECT_EQ(stat(queuePath().c_str(), &status), 0);
        return status.st_mode & 07777U;
    }

    const std::vector<std::string> all_{"1", "2", "3"};
};

/// Forks at its first message; the parent continues when the child has ended.
class ForkingAppender : public Appender {
public:
    explicit ForkingAppender(const AppenderOptions& options) : Appender(options) {}

    static inline pid_t child = -1; ///< 0 in the child
    static inline int statusOfChild = 0;
    static inline std::vector<std::string> given;

private:
    void doOutput(const LogMessage& message) override {
        if (child < 0) {
            child = fork();
        }
        if (child > 0 && given.empty()) {
            waitpid(child, &statusOfChild, 0);
        }
        given.push_back(message.getText());
    }
};

/// Never returns from a message.
class StuckAppender : public Appender {
public:
    explicit StuckAppender(const AppenderOptions& options) : Appender(options) {}

private:
    void doOutput(const LogMessage&) override { pause(); }
};

/// Ends the process at its second message.
class DyingAppender : public Appender {
public:
    explicit DyingAppender(const AppenderOptions& options) : Appender(options) {}

private:
    void doOutput(const LogMessage&) override {
        if (++count_ == 2) {
            _exit(0);
        }
    }

    int count_ = 0;
};

} // namespace

TEST_F(QueueFileInTrouble, GivesNothingTwiceHoweverOftenARecoveryIsKilled) {
    LogManager::registerAppenderClass("DyingAppender", [](const AppenderOptions& options) {
        return std::make_unique<DyingAppender>(options);
    });
    LogManager::registerAppenderClass("StuckAppender", [](const AppenderOptions& options) {
        return std::make_unique<StuckAppender>(options);
    });
    const std::string small = lazy(QUEUE + "zav.log.AsynchronousDispatcher.queueFileSize = 64 KB\n");
    std::vector<std::string> texts;
    for (int number = 0; number < 300; ++number) { // more than fit
        texts.push_back(std::to_string(number));
    }
    leave(small + "appender.0 = StuckAppender\nappender.0.asynchronous = true\n",
          texts); // before the other one's
    for (int kill = 0; kill < 12; ++kill) {
        inProcess([&] {
            init(small + "appender.z = DyingAppender\nappender.z.asynchronous = true\n");
            _exit(0);
        });
    }
    init(small);
    const std::vector<std::string> given = lastWordsOf("a.log");
    EXPECT_GE(given.size(), 10U);
    EXPECT_EQ(given.back(), texts.back());
    for (std::size_t i = 1; i < given.size(); ++i) {
        EXPECT_LT(std::stoi(given[i - 1]), std::stoi(given[i]));
    }
}

TEST_F(QueueFileInTrouble, HasRoomForAnyNumberOfLoggersAndDiscardsAloneWhatCannotFit) {
    const StandardErrorCapture errors;
    init(lazy(QUEUE + "zav.log.AsynchronousDispatcher.queueFileSize = 64 KB\n"));
    for (int number = 0; number < 2000; ++number) {
        LoggerFactory::getLogger("connection." + std::to_string(number)).info("accepted", 0, "");
        if (number % 50 == 0) {
            LogManager::flush();
        }
    }
    logger().info(std::string(200'000, 'x'), 0, "");
    LogManager::flush();
    const LogStatistics statistics = LogManager::statistics();
    EXPECT_EQ(statistics.discarded, 1U);
    EXPECT_EQ(statistics.delivered, 2000U);
    EXPECT_EQ(statistics.queued, 2001U);
}

TEST_F(QueueFileInTrouble, StaysItsProcessesOwnThoughThatOpensAndClosesIt) {
    init(lazy(QUEUE));
    EXPECT_NE(readFile(queuePath()), "");
    const int status = inProcess([&] {
        LogManager::finish();
        try {
            init(lazy(QUEUE));
        } catch (const LogException& exception) {
            _exit(std::string(exception.what()).find("is in use.") != std::string::npos ? 7 : 8);
        }
    });
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST_F(QueueFileInTrouble, KeepsWhatAnAppenderCouldNotWriteUntilItCan) {
    const std::string later = appender("b", "DIR/later", "b.log");
    const std::string lines = lazy(QUEUE) + later + appender("c", "/dev", "full");
    leave(lines, all_);
    init(lines);
    EXPECT_EQ(lastWordsOf("a.log"), all_);
    LogManager::finish();
    std::filesystem::create_directory(directory_ / "later");
    init(lines);
    EXPECT_EQ(lastWordsOf("a.log"), all_);
    EXPECT_EQ(lastWordsOf("later/b.log"), all_);
    LogManager::finish();
    for (int time = 0; time < 2; ++time) { // the second time finds nothing
        init(lazy(QUEUE) + later + appender("c", "DIR", "c.log"));
        EXPECT_EQ(lastWordsOf("a.log"), all_);
        EXPECT_EQ(lastWordsOf("later/b.log"), all_);
        EXPECT_EQ(lastWordsOf("c.log"), all_);
        LogManager::finish();
    }
}

TEST_F(QueueFileInTrouble, GoesOnBehindAMessageThatThereIsNoMemoryFor) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers need more memory than a limit leaves them";
#endif
    inProcess([&] {
        init(lazy(QUEUE));
        logger().info("1", 0, "");
        ZAV_LOGF_INFO(logger(), "{:>2000000000}", 2);
        logger().info("3", 0, "");
    });
    const int status = inProcess([&] {
        const rlimit limit = {std::uint64_t{1} << 28U, std::uint64_t{1} << 28U};
        setrlimit(RLIMIT_AS, &limit);
        init(lazy(QUEUE));
        const LogStatistics statistics = LogManager::statistics();
        _exit(statistics.recovered == 2 && statistics.failed == 1 ? 7 : 8);
    });
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(lastWordsOf("a.log"), std::vector<std::string>({"1", "3"}));
    init(lazy(QUEUE));
    EXPECT_EQ(LogManager::statistics().recovered, 0U);
}

TEST_F(QueueFileInTrouble, IsLeftAloneByAChildThatIsForkedWhileItsMessagesAreDelivered) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "it lets no forked child of several threads start one";
#endif
    LogManager::registerAppenderClass("ForkingAppender", [](const AppenderOptions& options) {
        return std::make_unique<ForkingAppender>(options);
    });
    const std::string lines = lazy("appender.f = ForkingAppender\nappender.f.asynchronous = true\n" + QUEUE);
    leave(lazy(QUEUE), all_);
    init(lines);
    if (ForkingAppender::child == 0) {
        logger().info("of the child", 0, "");
        _exit(ForkingAppender::given.size() == 1 && lastWordsOf("a.log").size() == 1 ? 7 : 8);
    }
    EXPECT_EQ(WEXITSTATUS(ForkingAppender::statusOfChild), 7);
    EXPECT_EQ(ForkingAppender::given, all_);
    EXPECT_EQ(lastWordsOf("a.log"), all_);
    EXPECT_EQ(LogManager::statistics().recovered, 3U);
}

/// The queue memory that the children release is their own copy.
TEST_F(QueueFileInTrouble, IsLeftAloneByChildrenThatAreForkedWhileOthersLog) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers lock their allocators during a fork";
#endif
    init(lazy(QUEUE + "zav.log.AsynchronousDispatcher.queueFileSize = 1 MB\n"
                      "zav.log.AsynchronousDispatcher.overflow = block\n"));
    std::atomic<bool> isOver{false};
    std::vector<std::thread> producers;
    for (int thread = 0; thread < 4; ++thread) {
        producers.emplace_back([&isOver] {
            while (!isOver) {
                logger().info("of the parent", 0, "");
            }
        });
    }
    for (int time = 0; time < 1000 && !HasFailure(); ++time) {
        EXPECT_EQ(inProcess([] {}), 0) << time;
    }
    isOver = true;
    for (std::thread& producer : producers) {
        producer.join();
    }
    LogManager::flush();
    const LogStatistics statistics = LogManager::statistics();
    EXPECT_EQ(statistics.discarded, 0U);
    EXPECT_EQ(lastWordsOf("a.log").size(), statistics.queued);
}

TEST_F(QueueFileInTrouble, IsMadeAnewWhereSomebodyHasRemovedIt) {
    inProcess([&] {
        init(lazy(QUEUE));
        LogManager::finish();
        std::filesystem::remove(queuePath());
        init(lazy(QUEUE));
        logger().info("left", 0, "");
    });
    init(lazy(QUEUE));
    EXPECT_EQ(lastWordsOf("a.log"), std::vector<std::string>({"left"}));
}

TEST_F(QueueFileInTrouble, IsTakenFromOthersUnlessItIsNone) {
    leave(lazy(QUEUE), all_);
    chmod(queuePath().c_str(), 0644);
    init(lazy(QUEUE));
    EXPECT_EQ(modeOfFile(), 0600U);
    LogManager::finish();
    std::filesystem::remove(queuePath());
    writeFile(queuePath(), "somebody's letter");
    chmod(queuePath().c_str(), 0644);
    EXPECT_THROW(init(lazy(QUEUE)), LogException);
    EXPECT_EQ(modeOfFile(), 0644U);
}

TEST_F(QueueFileInTrouble, IsTheSameForAReloadAfterTheProcessHasGoneElsewhere) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory_.path());
    const std::string lines = lazy("zav.log.AsynchronousDispatcher.queueFile = queue\n");
    init(lines);
    std::filesystem::current_path("/");
    EXPECT_NO_THROW(reload(lines));
    std::filesystem::current_path(before);
    EXPECT_TRUE(fileExists(queuePath()));
}

TEST_F(QueueFileInTrouble, IsRefusedAndNotFatalWhereFilesMayNotBeSoLarge) {
    const int status = inProcess([&] {
        const rlimit limit = {std::uint64_t{1} << 20U, std::uint64_t{1} << 20U};
        setrlimit(RLIMIT_FSIZE, &limit);
        const std::string refusal = textThrownBy<LogException>([&] { init(lazy(QUEUE)); });
        _exit(refusal == "The queue file " + queuePath() + " cannot be read: File too large" ? 7 : 8);
    });
    EXPECT_EQ(WEXITSTATUS(status), 7) << status;
    EXPECT_FALSE(fileExists(queuePath()) || fileExists(queuePath() + ".new"));
}
