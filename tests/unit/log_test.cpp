#include "TestSupport.h"

#include "log/LogException.h"
#include "log/LogMacros.h"
#include "log/LoggerFactory.h"

#include <gmock/gmock.h>

using namespace ZAV;
using namespace ZAV::Log;
using testing::ElementsAre;

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
    EXPECT_EQ(messageTypeFromString("CFG"), CFG);
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([] { messageTypeFromString("cfg"); }),
              "There is no 'cfg' MessageType defined.");
}

namespace {

class PlacesAppender : public Appender {
public:
    using Appender::Appender;
    std::vector<LogMessage> messages;

protected:
    void doOutput(const LogMessage& message) override { messages.push_back(message); }
};

class Macros : public testing::Test {
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
    PlacesAppender appender_{"places"};
};

} // namespace

TEST_F(Macros, EvaluateNothingOfTheTextWhenTheLevelIsOff) {
    ZAV_LOG_INFO(countedLogger(), "count " << ++textEvaluations_);
    EXPECT_EQ(textEvaluations_, 0);
    EXPECT_TRUE(appender_.messages.empty());
}

TEST_F(Macros, EvaluateOnceAndFillThePlaceInWhenTheLevelIsOn) {
    ZAV_LOG_ERROR(countedLogger(), "count " << ++textEvaluations_ << std::string(" done"));
    const int line = __LINE__ - 1;
    EXPECT_EQ(loggerEvaluations_, 1);
    ASSERT_EQ(appender_.messages.size(), 1U);
    const LogMessage& message = appender_.messages.front();
    EXPECT_EQ(message.getText(), "count 1 done");
    EXPECT_EQ(message.getLevel(), Level::ERROR);
    EXPECT_EQ(message.getLine(), line);
    EXPECT_EQ(message.getFile(), __FILE__);
}

TEST_F(Macros, StandForOneStatementOfTheirLevel) {
    logger_.setLevel(Level::TRACE, false);
    if (textEvaluations_ > 0)
        ZAV_LOG_AUDIT(logger_, "not this one");
    else
        ZAV_LOG_TRACE(logger_, "trace");
    ZAV_LOG_AUDIT(logger_, "audit");
    ZAV_LOG_WARNING(logger_, "warning");
    ZAV_LOG_INFO(logger_, "info");
    ZAV_LOG_DEBUG(logger_, "debug");
    std::vector<int> levels;
    for (const LogMessage& message : appender_.messages) {
        levels.push_back(message.getLevel());
    }
    EXPECT_THAT(levels, ElementsAre(10, 60, 40, 30, 20));
}

#undef ZAV_LOG_ACTIVE_LEVEL
#define ZAV_LOG_ACTIVE_LEVEL 40

TEST_F(Macros, BelowTheActiveLevelAreRemoved) {
    logger_.setLevel(Level::TRACE, false);
    ZAV_LOG_INFO(countedLogger(), "removed " << ++textEvaluations_);
    EXPECT_EQ(loggerEvaluations_ + textEvaluations_, 0);
    ZAV_LOG_WARNING(logger_, "kept");
    EXPECT_EQ(appender_.messages.size(), 1U);
}
