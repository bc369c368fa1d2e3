#include "TestSupport.h"

#include "log/LogFormat.h"
#include "log/LoggerFactory.h"
#include "log/async/AsynchronousDispatcher.h"

#include <fmt/chrono.h>
#include <gmock/gmock.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

enum class Failure { EXCEPTION, NUMBER, MEMORY };

} // namespace

template <>
struct fmt::formatter<Failure> {
    static constexpr auto parse(format_parse_context& context) { return context.begin(); }
    static auto format(Failure failure, format_context& context) -> decltype(context.out()) {
        switch (failure) {
        case Failure::EXCEPTION:
            throw std::runtime_error("out of order");
        case Failure::NUMBER:
            throw 7;
        case Failure::MEMORY:
            throw std::bad_alloc();
        }
        return context.out();
    }
};

namespace {

using namespace ZAV;
using namespace ZAV::Log;
using testing::ElementsAre;
using TestSupport::textsOf;

class FormatMacros : public testing::Test {
protected:
    Logger& countedLogger() {
        ++evaluations_;
        return logger_;
    }

    int evaluations_ = 0;
    Logger& logger_ = LoggerFactory::getLogger("formatted");
    const LogCapture capture_{logger_, Level::WARNING};
};

} // namespace

TEST_F(FormatMacros, EvaluateOnceWhenTheLevelIsOnAndNothingWhenItIsOff) {
    ZAV_LOGF_INFO(logger_, "{}", ++evaluations_);
    ASSERT_THAT(capture_.messages(), testing::IsEmpty());
    ZAV_LOGF_ERROR(countedLogger(), "user {} left after {} s", 12, 0.25);
    const int line = __LINE__ - 1;
    EXPECT_EQ(evaluations_, 1);
    ASSERT_THAT(textsOf(capture_), ElementsAre("user 12 left after 0.25 s"));
    EXPECT_EQ(capture_.count(Level::ERROR), 1U);
    EXPECT_EQ(capture_.messages().front().getLine(), line);
    EXPECT_EQ(capture_.messages().front().getFile(), __FILE__);
}

TEST_F(FormatMacros, StandForOneStatementOfTheirLevelAboveTheFloor) {
    logger_.setLevel(Level::TRACE, false);
    if (evaluations_ > 0)
        ZAV_LOGF_AUDIT(logger_, "not this one");
    else
        ZAV_LOGF_TRACE(logger_, "without values");
    ZAV_LOGF_AUDIT(std::as_const(logger_), "{}", 1);
    ZAV_LOGF_WARNING(logger_, "{}", 2);
    ZAV_LOGF_INFO(logger_, "{}", 3);
    ZAV_LOGF_DEBUG(logger_, "{}", 4);
#undef ZAV_LOG_ACTIVE_LEVEL
#define ZAV_LOG_ACTIVE_LEVEL 20
    ZAV_LOGF_TRACE(countedLogger(), "removed {}", ++evaluations_);
    EXPECT_EQ(evaluations_, 0);
    std::vector<int> levels;
    for (const LogMessage& message : capture_.messages()) {
        levels.push_back(message.getLevel());
    }
    EXPECT_THAT(levels, ElementsAre(10, 60, 40, 30, 20));
    EXPECT_EQ(textsOf(capture_).front(), "without values");
}

TEST_F(FormatMacros, TakeWhatTheLanguageOfFormatsHas) {
    char array[] = "array";
    const std::string longText(10000, 'x');
    const std::vector<int> numbers{1, 2};
    ZAV_LOGF_AUDIT(logger_, "{{{1:>4}{0:#x}}} {2:.{3}f} {4}", 255, "ab", 2.0, 3, array);
    EXPECT_EQ(textsOf(capture_).back(), "{  ab0xff} 2.000 array");
    ZAV_LOGF_AUDIT(logger_, "{:%S} {}", std::chrono::seconds(5), fmt::join(numbers, ", "));
    EXPECT_EQ(textsOf(capture_).back(), "05 1, 2");
    ZAV_LOGF_AUDIT(logger_, "{}{}", longText, longText);
    EXPECT_EQ(textsOf(capture_).back(), longText + longText);
}

TEST_F(FormatMacros, PutAFailureToFormatIntoTheText) {
    ZAV_LOGF_AUDIT(logger_, "state {} of {}", 1, Failure::EXCEPTION);
    EXPECT_EQ(textsOf(capture_).back(), "state {} of {} [not formatted: out of order]");
    ZAV_LOGF_AUDIT(logger_, "{}", Failure::NUMBER);
    EXPECT_EQ(textsOf(capture_).back(), "{} [not formatted: unknown exception]");
    EXPECT_THROW(ZAV_LOGF_AUDIT(logger_, "{}", Failure::MEMORY), std::bad_alloc);
}

TEST(QueuedFormat, NeedsNoneOfItsValuesWhenTheConsumerComes) {
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
    Logger& logger = LoggerFactory::getLogger("queued");
    TestSupport::RecordingAppender appender("queued", false);
    dispatcher.registerAsynchronousAppender(&appender);
    logger.addAppender(&appender);
    {
        std::string user(100, 'u');
        ZAV_LOGF_ERROR(logger, "{} {}", user, std::string("left"));
        user.assign(100, 'x');
    }
    EXPECT_TRUE(dispatcher.flush(Util::TimeUtils::Time()));
    logger.removeAppender(&appender);
    dispatcher.unregisterAsynchronousAppender(&appender);
    EXPECT_THAT(appender.texts, ElementsAre(std::string(100, 'u') + " left"));
}
