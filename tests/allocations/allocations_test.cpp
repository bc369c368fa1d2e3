#include "TestClock.h"
#include "TestSupport.h"

#include "log/LogLine.h"
#include "log/LogMacros.h"
#include "log/appenders/FileAppender.h"

#include <cstdlib>
#include <new>

using namespace ZAV;
using namespace ZAV::Log;

namespace {

thread_local std::size_t allocations = 0;
thread_local std::size_t failingAllocation = 0; ///< as `allocations` counts them; 0 for none

} // namespace

// These stand in the place of the system's; the array forms call them.

void* operator new(std::size_t size) {
    ++allocations;
    if (allocations == failingAllocation) {
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
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
    const std::size_t allocations = allocationsOf([this] {
        for (std::size_t i = 0; i < MESSAGES; ++i) {
            logger_.info(SHORT, 1, SHORT);
        }
    });
    // The queue takes a block for every few hundred messages.
    EXPECT_LE(allocations, MESSAGES / 100);
}

namespace {

/// \return false if the allocation of that number, counted from the call on, did not take place
template <typename Call>
bool failsAtAllocation(std::size_t number, Call call) {
    const std::size_t before = allocations;
    failingAllocation = before + number;
    try {
        call();
    } catch (const std::bad_alloc&) {
    }
    const bool hasFailed = allocations >= failingAllocation;
    failingAllocation = 0;
    return hasFailed;
}

} // namespace

TEST(RotatingFile, MovesTheSeriesOnceWhateverAllocationFails) {
    for (std::size_t number = 1;; ++number) {
        const TestSupport::TemporaryDirectory directory;
        const std::string livePath = directory / "a-name-longer-than-a-string-holds-in-itself.";
        for (const char* index : {"0", "1", "2"}) {
            TestSupport::writeFile(livePath + index, index);
        }
        FileAppender appender("x", true, {}, directory.path(), "a-name-longer-than-a-string-holds-in-itself.",
                              2, 1000, Util::TimeUtils::Time());
        const bool hasFailed =
            failsAtAllocation(number, [&] { appender.output(TestSupport::makeMessage("a")); });
        const LogMessage last = TestSupport::makeMessage("last");
        appender.output(last);
        EXPECT_THAT(TestSupport::readFile(livePath + "0"), testing::EndsWith(formatLogLine(last) + "\n"));
        EXPECT_EQ(TestSupport::readFile(livePath + "1") + TestSupport::readFile(livePath + "2"), "01")
            << "allocation " << number;
        if (!hasFailed) {
            EXPECT_GT(number, 10U);
            return;
        }
    }
}
