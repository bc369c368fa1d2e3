#include "TestClock.h"
#include "TestSupport.h"

#include "log/LogContext.h"
#include "log/LogLine.h"
#include "log/LogValues.h"
#include "log/appenders/FileAppender.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <future>
#include <new>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;

namespace {

thread_local std::size_t allocations = 0;

/// Allocations of all threads that were not freed yet.
std::atomic<long> inUse{0};

/// Counts down to the allocation, of whatever thread, that fails.
std::atomic<long> untilFailure{0};

bool fails() {
    return untilFailure > 0 && --untilFailure == 0;
}

} // namespace

// These stand in the place of the system's; the array forms call them.

void* operator new(std::size_t size) {
    ++allocations;
    void* const memory = fails() ? nullptr : std::malloc(size);
    if (memory != nullptr) {
        ++inUse;
        return memory;
    }
    throw std::bad_alloc();
}

// Not inlined: the compiler would take its call of free for a mistake.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    inUse -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace {

/// How often the calling thread allocates memory with `new` in a call.
template <typename Call>
std::size_t allocationsOf(Call call) {
    const std::size_t before = allocations;
    call();
    return allocations - before;
}

/// Texts that a string holds in itself, and one that it has to allocate for.
const std::string SHORT = "short";
const std::string LONG(100, 'x');

class LoggingCost : public testing::Test {
protected:
    LoggingCost() { logger_.setLevel(Level::INFO, false); }
    ~LoggingCost() override { LogManager::finish(); }

    Util::Properties toFile() const {
        Util::Properties properties;
        properties["appender.file"] = "FileAppender";
        properties["appender.file.dir"] = directory_.path();
        return properties;
    }

    Logger& logger_ = LoggerFactory::getLogger("counted");
    const TestSupport::TemporaryDirectory directory_;
};

} // namespace

TEST_F(LoggingCost, NoAllocationForARejectedCall) {
    EXPECT_EQ(allocationsOf([this] { logger_.debug(LONG, 1, LONG); }), 0U);
    EXPECT_EQ(allocationsOf([this] { ZAV_LOG_DEBUG(logger_, LONG << std::string(1000, 'y')); }), 0U);
}

TEST_F(LoggingCost, NoAllocationAndOneClockReadingForAMessage) {
    TestSupport::CallingAppender appender([](const LogMessage&) {});
    logger_.addAppender(&appender);
    logger_.info(LONG, 1, LONG); // the first one takes memory that all others use
    const std::size_t readings = TestSupport::clockReadingsOfThisThread();
    EXPECT_EQ(allocationsOf([this] { logger_.info(SHORT, 1, SHORT); }), 0U);
    EXPECT_EQ(allocationsOf([this] { logger_.info(LONG, 1, LONG); }), 0U);
    logger_.debug(LONG, 1, LONG);
    EXPECT_EQ(TestSupport::clockReadingsOfThisThread(), readings + 2);
    logger_.removeAppender(&appender);
}

TEST_F(LoggingCost, NoAllocationForAStreamedMessage) {
    TestSupport::CallingAppender appender([](const LogMessage&) {});
    logger_.addAppender(&appender);
    const auto log = [this] { ZAV_LOG_INFO(logger_, LONG << ' ' << 42 << ' ' << 2.5); };
    log();
    EXPECT_EQ(allocationsOf(log), 0U);
    logger_.removeAppender(&appender);
}

TEST_F(LoggingCost, NoAllocationForAMessageWithContextAndValues) {
    TestSupport::CallingAppender appender([](const LogMessage&) {});
    logger_.addAppender(&appender);
    const auto log = [this] {
        const LogContext request("request", LONG);
        const LogContext user("user", 7);
        ZAV_LOGV_INFO(logger_, LONG, "order", 17, "amount", 4.25, "name", LONG);
        ZAV_LOGV_INFO(logger_, LONG, "a", 1, "b", 2, "c", 3, "d", 4, "e", 5, "f", 6, "g", 7, "h", 8, "i", 9,
                      "j", 10, "k", 11, "l", 12, "m", 13, "n", 14, "o", 15, "p", 16, "q", 17, "r", 18, "s",
                      19, "t", 20, "u", 21, "v", 22, "w", 23, "x", 24, "y", 25, "z", 26);
    };
    log();
    EXPECT_EQ(allocationsOf(log), 0U);
    std::optional<LogContext> contexts[2]; // one of them is always open, as where requests overlap
    const auto renew = [&contexts] {
        for (int number = 0; number < 1000; ++number) {
            contexts[number % 2].emplace("request", number);
            contexts[1 - number % 2].reset();
        }
    };
    EXPECT_EQ(allocationsOf(renew), 0U);
    logger_.removeAppender(&appender);
}

TEST_F(LoggingCost, OneAllocationForALine) {
    const LogMessage message("counted", Util::TimeUtils::Time::now(), Level::WARNING, LONG, 2147483647, LONG,
                             LOG);
    Level::toString(Level::WARNING); // the first use makes the names of all levels
    EXPECT_EQ(allocationsOf([&message] { formatLogLine(message); }), 1U);
}

TEST_F(LoggingCost, NoAllocationForALineInAnOpenFile) {
    LogManager::init(toFile());
    logger_.info(LONG, 1, SHORT);
    EXPECT_EQ(allocationsOf([this] { logger_.info(SHORT, 1, SHORT); }), 0U);
}

TEST_F(LoggingCost, NoAllocationOfItsOwnForAQueuedMessage) {
    Util::Properties properties = toFile();
    properties["appender.file.asynchronous"] = "true";
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = "3600";
    LogManager::init(properties);
    constexpr std::size_t MESSAGES = 10000;
    const std::size_t taken = allocationsOf([this] {
        for (std::size_t i = 0; i < MESSAGES; ++i) {
            logger_.info(SHORT, 1, SHORT);
        }
    });
    // The queue takes a block for every few hundred messages.
    EXPECT_LE(taken, MESSAGES / 100);
}

TEST_F(LoggingCost, NoAllocationInABurstDuringALongDelivery) {
    Util::Properties properties;
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = "3600";
    LogManager::init(properties);
    const std::string text(1000, 'x');
    const auto log = [&](int messages) {
        for (int i = 0; i < messages; ++i) {
            logger_.info(text, 1, SHORT);
        }
    };
    constexpr int MORE_THAN_IS_CACHED = 1600;
    int left = 1 + MORE_THAN_IS_CACHED;
    std::promise<void> isAtLast;
    std::promise<void> mayGoOn;
    TestSupport::CallingAppender appender(
        [&](const LogMessage&) {
            if (--left == 0) {
                isAtLast.set_value();
                mayGoOn.get_future().wait();
            }
        },
        false);
    LogManager::addAsynchronousAppender(&appender);
    logger_.addAppender(&appender);
    log(1);
    LogManager::flush(); // the consumer has filled the cache
    log(MORE_THAN_IS_CACHED);
    std::thread flushing([] { LogManager::flush(); });
    isAtLast.get_future().wait();
    EXPECT_EQ(allocationsOf([&] { log(300); }), 0U);
    mayGoOn.set_value();
    flushing.join();
    logger_.removeAppender(&appender);
    LogManager::removeAsynchronousAppender(&appender);
}

TEST_F(LoggingCost, NoMemoryForThreadsThatHaveEnded) {
    Util::Properties properties = toFile();
    properties["appender.file.asynchronous"] = "true";
    LogManager::init(properties);
    const auto logFromThreads = [this](int count) {
        for (int i = 0; i < count; ++i) {
            std::thread([this] { logger_.info(SHORT, 1, SHORT); }).join();
            EXPECT_TRUE(LogManager::flush());
        }
        LogManager::statistics(); // waits until the queue has let go of the last thread's memory
    };
    logFromThreads(20);
    const long before = inUse;
    logFromThreads(100);
    EXPECT_LE(inUse, before);
}

namespace {

/// \return false if the call threw for want of memory; nothing else may come out of it
template <typename Call>
bool survives(Call call) {
    try {
        call();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// \return false if there was no allocation of that number since `untilFailure` was set
bool endFailing() {
    return untilFailure.exchange(0) <= 0;
}

} // namespace

TEST(RotatingFile, MovesTheSeriesOnceWhateverAllocationFails) {
    for (long number = 1;; ++number) {
        const TestSupport::TemporaryDirectory directory;
        const std::string livePath = directory / "a-name-longer-than-a-string-holds-in-itself.";
        for (const char* index : {"0", "1", "2"}) {
            TestSupport::writeFile(livePath + index, index);
        }
        AppenderValues values("a-name-longer-than-a-string-holds-in-itself.");
        values.dir = directory.path();
        values.fileNumber = 2;
        FileAppender appender(values, {});
        untilFailure = number;
        survives([&] { appender.output(TestSupport::makeMessage("a")); });
        const bool hasFailed = endFailing();
        const LogMessage last = TestSupport::makeMessage("last");
        appender.output(last);
        EXPECT_THAT(TestSupport::readFile(livePath + "0"), testing::EndsWith(formatLogLine(last) + "\n"));
        EXPECT_EQ(TestSupport::readFile(livePath + "1") + TestSupport::readFile(livePath + "2"), "01")
            << "allocation " << number;
        if (!hasFailed) {
            EXPECT_GT(number, 10);
            return;
        }
    }
}

TEST_F(LoggingCost, OneFailingAllocationLosesNoMessageUnseen) {
    Util::Properties properties = toFile();
    properties["appender.file.level"] = "INFO";
    properties["appender.file.expiration"] = "1 hour";
    properties["appender.queued"] = "SimpleFileAppender";
    properties["appender.queued.asynchronous"] = "true";
    properties["appender.queued.dir"] = directory_.path();
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = "0";
    TestSupport::CallingListener answering([this](const std::string&) { logger_.error(SHORT, 0, ""); });
    bool hasFailed = true;
    for (long number = 1; hasFailed; ++number) {
        std::filesystem::remove(directory_ / "queued");
        const LogStatistics before = LogManager::statistics();
        untilFailure = number;
        const bool isInitialised = survives([&] { LogManager::init(properties); });
        survives([&] { LogManager::registerCommandListener("EXCEPTION", &answering); });
        std::size_t logged = 0;
        for (int message = 0; message < 3; ++message) {
            logged += survives([this] { logger_.error(LONG, 0, LONG); }) ? 1 : 0;
        }
        survives([] { LogManager::flush(); });
        hasFailed = endFailing();
        EXPECT_TRUE(!isInitialised || LogManager::flush()) << number;
        LogManager::finish();

        const LogStatistics after = LogManager::statistics();
        EXPECT_EQ(after.queued, after.delivered + after.discarded) << number;
        const std::string written = TestSupport::readFile(directory_ / "queued");
        const auto lines = static_cast<std::size_t>(std::count(written.begin(), written.end(), '\n'));
        EXPECT_GE(lines + after.failed - before.failed, isInitialised ? logged : 0U) << number;
    }
}

TEST(Appender, TakesItsCommandListenersAlongAlsoWithoutMemory) {
    TestSupport::CallingListener listener([](const std::string&) { FAIL() << "it was left behind"; });
    LogManager::registerCommandListener("calling", &listener);
    {
        const TestSupport::CallingAppender appender([](const LogMessage&) {});
        untilFailure = 1;
    }
    EXPECT_FALSE(endFailing()) << "it took memory";
    LogManager::command("calling", "");
}
