#include "TestSupport.h"

#include "log/LogCapture.h"
#include "log/LogFormat.h"
#include "log/LogLimits.h"
#include "log/LogMacros.h"

#include <stdexcept>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using namespace testing;
using TestSupport::textsOf;
using namespace std::chrono_literals;

namespace {

/// A call that was let through, and how many were suppressed before it.
using Let = std::pair<int, std::uint64_t>;

inline void logInline(Logger& logger) {
    ZAV_LOG_ONCE(logger.error("inline"));
}

template <typename Value>
void logTwiceIn(Logger& logger, Value value) {
    for (int i = 0; i < 2; ++i) {
        ZAV_LOG_ONCE(ZAV_LOG_ERROR(logger, value));
    }
}

/// Has two threads race at one call site, then makes a last call without the limit, and expects that each
/// call was either let through or counted as suppressed.
/// \param call receives whether its limit is on; adds to the numbers of calls let through and suppressed
template <typename Call>
void expectThatNoneIsLost(const Call& call) {
    constexpr std::uint64_t CALLS = 500'000;
    std::atomic<std::uint64_t> let{0};
    std::atomic<std::uint64_t> leftOut{0};
    std::atomic<int> missing{2};
    const auto callOften = [&] {
        --missing;
        while (missing > 0) {
            std::this_thread::yield();
        }
        for (std::uint64_t i = 0; i < CALLS; ++i) {
            call(true, let, leftOut);
        }
    };
    std::thread other(callOften);
    callOften();
    other.join();
    call(false, let, leftOut);
    EXPECT_EQ(let + leftOut, 2 * CALLS + 1);
    EXPECT_GT(let, 1U);
    EXPECT_GT(leftOut, 1U);
}

class LogLimits : public Test {
protected:
    Logger& logger_ = LoggerFactory::getLogger("limited");
    const LogCapture capture_{logger_, Level::WARNING};
};

} // namespace

TEST_F(LogLimits, LetTheFirstCallThroughAndEveryNthAfterIt) {
    std::vector<Let> let;
    const int limits[] = {3, 3, 3, 3, 3, 0, 3, -1, 3, 3, 3, 1, 1, 2, 2};
    for (int call = 0; call < 15; ++call) {
        ZAV_LOG_EVERY_NTH(limits[call], let.emplace_back(call, ZAV_LOG_SUPPRESSED));
    }
    EXPECT_THAT(let, ElementsAre(Let(0, 0), Let(3, 2), Let(5, 1), Let(7, 1), Let(10, 2), Let(11, 0),
                                 Let(12, 0), Let(14, 1)));
    for (const std::uint64_t never : {~std::uint64_t{0}, std::uint64_t{0}}) {
        for (int call = 20; call < 22; ++call) {
            ZAV_LOG_EVERY_NTH(never, let.emplace_back(call, ZAV_LOG_SUPPRESSED));
        }
    }
    EXPECT_THAT(std::vector<Let>(let.begin() + 8, let.end()),
                ElementsAre(Let(20, 0), Let(20, 1), Let(21, 0)));
}

TEST_F(LogLimits, LetACallThroughWhenTheTimeHasPassed) {
    Limits::AtMostEvery limit;
    const Limits::AtMostEvery::Clock::time_point start; // the clock's epoch: no time is special
    EXPECT_EQ(limit.pass(10s, start), 0U);
    EXPECT_EQ(limit.pass(10s, start), std::nullopt);
    EXPECT_EQ(limit.pass(10s, start + 10s - 1ns), std::nullopt);
    EXPECT_EQ(limit.pass(10s, start + 10s), 2U);
    EXPECT_EQ(limit.pass(10s, start + 9s), std::nullopt); // this thread read the clock before another one
    EXPECT_EQ(limit.pass(10s, start + 20s - 1ns), std::nullopt);
    EXPECT_EQ(limit.pass(std::chrono::duration<double>(9.5), start + 20s - 1ns), 2U);
    EXPECT_EQ(limit.pass(0s, start + 20s - 1ns), 0U);
    EXPECT_EQ(limit.pass(std::chrono::hours::max(), start + 21s), std::nullopt);
    EXPECT_EQ(limit.pass(-1s, start + 21s), 1U);

    std::vector<Let> let;
    for (int call = 0; call < 4; ++call) {
        ZAV_LOG_AT_MOST_EVERY(call < 3 ? 24h : 0h, let.emplace_back(call, ZAV_LOG_SUPPRESSED));
    }
    EXPECT_THAT(let, ElementsAre(Let(0, 0), Let(3, 2)));
}

TEST_F(LogLimits, StandForOneStatementAroundAnyOther) {
    const auto log = [this](bool isLimited) {
        if (isLimited)
            ZAV_LOG_EVERY_NTH(2, ZAV_LOGF_ERROR(logger_, "{}, {}", ZAV_LOG_SUPPRESSED, "limited"));
        else
            ZAV_LOG_EVERY_NTH(2, ZAV_LOG_ERROR(logger_, "not limited, " << ZAV_LOG_SUPPRESSED);
                              static_cast<void>(0));
    };
    for (int i = 0; i < 3; ++i) {
        log(true);
    }
    log(false);
    EXPECT_THAT(textsOf(capture_), ElementsAre("0, limited", "1, limited", "not limited, 0"));
}

TEST_F(LogLimits, CountWhetherOrNotTheLoggerLetsTheStatementThroughAndWhateverItThrows) {
    for (int call = 0; call < 5; ++call) {
        try {
            ZAV_LOG_EVERY_NTH(2, ZAV_LOG_INFO(logger_, "not evaluated");
                              ZAV_LOG_ERROR(logger_, "call " << call); throw std::runtime_error("thrown"));
        } catch (const std::runtime_error&) {
        }
    }
    EXPECT_THAT(textsOf(capture_), ElementsAre("call 0", "call 2", "call 4"));
}

TEST_F(LogLimits, OfEachPlaceAndInstantiationAreItsOwn) {
    for (int i = 0; i < 2; ++i) {
        ZAV_LOG_ONCE(ZAV_LOG_ERROR(logger_, "first"));
        ZAV_LOG_ONCE(ZAV_LOG_ERROR(logger_, "second"));
        logInline(logger_);
    }
    logTwiceIn(logger_, "text");
    logTwiceIn(logger_, 7);
    EXPECT_THAT(textsOf(capture_), ElementsAre("first", "second", "inline", "text", "7"));
}

TEST_F(LogLimits, InOneAnotherGiveTheInnermostNumber) {
    std::vector<Let> let;
    for (int call = 0; call < 12; ++call) {
        ZAV_LOG_EVERY_NTH(
            2, ZAV_LOG_EVERY_NTH(3, ZAV_LOG_AT_MOST_EVERY(
                                        call == 0 ? 0h : 24h,
                                        ZAV_LOG_EVERY_NTH(1, let.emplace_back(call, ZAV_LOG_SUPPRESSED)))));
        ZAV_LOG_EVERY_NTH(4, let.emplace_back(-call, ZAV_LOG_SUPPRESSED);
                          ZAV_LOG_EVERY_NTH(2, let.emplace_back(100 + call, ZAV_LOG_SUPPRESSED)));
    }
    EXPECT_THAT(let, ElementsAre(Let(0, 0), Let(0, 0), Let(100, 0), Let(-4, 3), Let(-8, 3), Let(108, 1)));
}

TEST_F(LogLimits, LoseNoCallOfManyThreads) {
    expectThatNoneIsLost([](bool isOn, auto& let, auto& leftOut) {
        ZAV_LOG_EVERY_NTH(isOn ? 3 : 0, ++let; leftOut += ZAV_LOG_SUPPRESSED);
    });
    expectThatNoneIsLost([](bool isOn, auto& let, auto& leftOut) {
        ZAV_LOG_AT_MOST_EVERY(isOn ? 1us : 0us, ++let; leftOut += ZAV_LOG_SUPPRESSED);
    });
    std::atomic<int> once{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&once] { ZAV_LOG_ONCE(++once); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(once, 1);
}
