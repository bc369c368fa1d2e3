#include "TestSupport.h"

#include "log/LogException.h"
#include "log/LogMacros.h"

using namespace ZAV;
using namespace ZAV::Log;
using namespace testing;

TEST(Level, NamesAndNumbersMatchExactly) {
    for (const Level::LogLevel level :
         {Level::AUDIT, Level::ERROR, Level::WARNING, Level::INFO, Level::DEBUG, Level::TRACE}) {
        EXPECT_EQ(Level::fromString(Level::toString(level)), level);
    }
    EXPECT_EQ(Level::toString(static_cast<Level::LogLevel>(45)), "ERROR");
    for (const std::string name : {"Warning", "", " INFO", "30"}) {
        EXPECT_EQ(TestSupport::textThrownBy<LogException>([&] { Level::fromString(name); }),
                  "There is no '" + name + "' LogLevel defined.");
    }
}

namespace {

class Macros : public Test {
protected:
    Macros() { logger_.addAppender(&appender_); }
    ~Macros() override { logger_.removeAppender(&appender_); }

    Logger& countedLogger() {
        ++loggerEvaluations_;
        return logger_;
    }

    int loggerEvaluations_ = 0;
    int textEvaluations_ = 0;
    Logger& logger_ = LoggerFactory::getLogger("macros");
    TestSupport::RecordingAppender appender_{"places"};
};

} // namespace

TEST_F(Macros, EvaluateTheTextOnceAndOnlyWhenTheLevelIsOn) {
    ZAV_LOG_INFO(logger_, "count " << ++textEvaluations_);
    EXPECT_EQ(textEvaluations_, 0);
    ZAV_LOG_ERROR(countedLogger(), "count " << ++textEvaluations_ << std::string(" done"));
    const int line = __LINE__ - 1;
    EXPECT_EQ(loggerEvaluations_, 1);
    ASSERT_THAT(appender_.texts, ElementsAre("count 1 done"));
    EXPECT_EQ(appender_.messages[0].getLine(), line);
    EXPECT_EQ(appender_.messages[0].getFile(), __FILE__);
}

TEST_F(Macros, StandForOneStatement) {
    if (textEvaluations_ > 0)
        ZAV_LOG_AUDIT(logger_, "not this one");
    else
        ZAV_LOG_ERROR(logger_, "this one");
    EXPECT_THAT(appender_.texts, ElementsAre("this one"));
}

#undef ZAV_LOG_ACTIVE_LEVEL
#define ZAV_LOG_ACTIVE_LEVEL 40

TEST_F(Macros, BelowTheActiveLevelAreRemoved) {
    logger_.setLevel(Level::TRACE, false);
    ZAV_LOG_INFO(countedLogger(), "removed " << ++textEvaluations_);
    EXPECT_EQ(loggerEvaluations_ + textEvaluations_, 0);
    ZAV_LOG_WARNING(logger_, "kept");
    EXPECT_THAT(appender_.texts, SizeIs(1));
}
