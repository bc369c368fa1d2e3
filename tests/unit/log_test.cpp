#include "TestSupport.h"

#include "log/LogException.h"
#include "log/LogMacros.h"

using namespace ZAV;
using namespace ZAV::Log;
using namespace testing;
using TestSupport::textsOf;

TEST(Level, NamesAndNumbersMatchExactly) {
    for (const Level::LogLevel level :
         {Level::AUDIT, Level::ERROR, Level::WARNING, Level::INFO, Level::DEBUG, Level::TRACE}) {
        EXPECT_EQ(Level::fromString(Level::toString(level)), level);
    }
    EXPECT_THAT(
        (std::vector<int>{ZAV_LOG_LEVEL_AUDIT, ZAV_LOG_LEVEL_ERROR, ZAV_LOG_LEVEL_WARNING, ZAV_LOG_LEVEL_INFO,
                          ZAV_LOG_LEVEL_DEBUG, ZAV_LOG_LEVEL_TRACE}),
        ElementsAre(Level::AUDIT, Level::ERROR, Level::WARNING, Level::INFO, Level::DEBUG, Level::TRACE));
    EXPECT_EQ(Level::toString(static_cast<Level::LogLevel>(45)), "ERROR");
    for (const std::string name : {"Warning", "", " INFO", "30"}) {
        EXPECT_EQ(TestSupport::textThrownBy<LogException>([&] { Level::fromString(name); }),
                  "There is no '" + name + "' LogLevel defined.");
    }
}

namespace {

class Macros : public Test {
protected:
    Logger& countedLogger() {
        ++loggerEvaluations_;
        return logger_;
    }

    int loggerEvaluations_ = 0;
    int textEvaluations_ = 0;
    Logger& logger_ = LoggerFactory::getLogger("macros");
    const LogCapture capture_{logger_, Level::WARNING};
};

} // namespace

TEST_F(Macros, EvaluateTheTextOnceAndOnlyWhenTheLevelIsOn) {
    ZAV_LOG_INFO(logger_, "count " << ++textEvaluations_);
    EXPECT_EQ(textEvaluations_, 0);
    ZAV_LOG_ERROR(countedLogger(), "count " << ++textEvaluations_ << std::string(" done"));
    const int line = __LINE__ - 1;
    EXPECT_EQ(loggerEvaluations_, 1);
    ASSERT_THAT(textsOf(capture_), ElementsAre("count 1 done"));
    EXPECT_EQ(capture_.messages()[0].getLine(), line);
    EXPECT_EQ(capture_.messages()[0].getFile(), __FILE__);
}

TEST_F(Macros, StandForOneStatement) {
    if (textEvaluations_ > 0)
        ZAV_LOG_AUDIT(logger_, "not this one");
    else
        ZAV_LOG_ERROR(logger_, "this one");
    EXPECT_THAT(textsOf(capture_), ElementsAre("this one"));
}

TEST_F(Macros, TakeALoggerThatOnlyLogs) {
    const Logger& constant = logger_;
    ZAV_LOG_ERROR(constant, "streamed");
    EXPECT_TRUE(capture_.contains("streamed"));
}

TEST_F(Macros, NeedNoPlaceIfTheFunctionBehindThemIsCalled) {
    logger_.error("text");
    logger_.audit("line", 7);
    EXPECT_THAT(capture_.lines(),
                ElementsAre(Util::TimeUtils::Time::now().toString() + " macros ERROR text",
                            Util::TimeUtils::Time::now().toString() + " macros :7 AUDIT line"));
}

#undef ZAV_LOG_ACTIVE_LEVEL
#define ZAV_LOG_ACTIVE_LEVEL ZAV_LOG_LEVEL_WARNING
#if ZAV_LOG_ACTIVE_LEVEL <= ZAV_LOG_LEVEL_INFO || ZAV_LOG_LEVEL_ERROR <= ZAV_LOG_ACTIVE_LEVEL
#error "the names of the levels are not their numbers"
#endif

TEST_F(Macros, BelowTheActiveLevelAreRemoved) {
    logger_.setLevel(Level::TRACE, false);
    ZAV_LOG_INFO(countedLogger(), "removed " << ++textEvaluations_);
    EXPECT_EQ(loggerEvaluations_ + textEvaluations_, 0);
    ZAV_LOG_WARNING(logger_, "kept");
    EXPECT_THAT(textsOf(capture_), ElementsAre("kept"));
}
