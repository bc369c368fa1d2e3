#include "TestSupport.h"

#include "log/LogFormat.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"

#include <fmt/chrono.h>
#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <locale>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

enum class Failure { EXCEPTION, NUMBER, MEMORY };
enum Colour { RED, GREEN };

#define FORMAT_OF_A_MACRO "of a macro {}"
constexpr char FORMAT_IN_AN_ARRAY[] = "in an array {}";
constexpr const char* FORMAT_BEHIND_A_POINTER = "behind a pointer {}";

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

/// With texts formatted in the call, and with texts formatted by the consumer.
class FormatMacros : public testing::TestWithParam<bool> {
protected:
    FormatMacros() {
        LogManager::addAsynchronousAppender(&appender_);
        logger_.addAppender(&appender_);
        logger_.audit("lets the logger see its appenders", 0, "");
        flush();
        appender_.messages.clear();
    }
    ~FormatMacros() override {
        logger_.removeAppender(&appender_);
        LogManager::removeAsynchronousAppender(&appender_);
    }

    void flush() {
        if (!appender_.isSynchronous()) {
            EXPECT_TRUE(LogManager::flush());
        }
    }

    const std::vector<LogMessage>& messages() {
        flush();
        return appender_.messages;
    }

    /// The text of the last message.
    std::string text() {
        flush();
        return appender_.texts.back();
    }

    Logger& countedLogger() {
        ++evaluations_;
        return logger_;
    }

    int evaluations_ = 0;
    Logger& logger_ = LoggerFactory::getLogger("formatted");
    TestSupport::RecordingAppender appender_{"messages", GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Made, FormatMacros, testing::Bool(), [](const auto& parameter) {
    return parameter.param ? "InTheCall" : "ByTheConsumer";
});

} // namespace

TEST_P(FormatMacros, EvaluateOnceWhenTheLevelIsOnAndNothingWhenItIsOff) {
    ZAV_LOGF_INFO(logger_, "{}", ++evaluations_);
    ASSERT_TRUE(messages().empty());
    ZAV_LOGF_ERROR(countedLogger(), "user {} left after {} s", 12, 0.25);
    const int line = __LINE__ - 1;
    EXPECT_EQ(evaluations_, 1);
    ASSERT_EQ(messages().size(), 1U);
    EXPECT_EQ(text(), "user 12 left after 0.25 s");
    EXPECT_EQ(messages().front().getLevel(), Level::ERROR);
    EXPECT_EQ(messages().front().getLine(), line);
    EXPECT_EQ(messages().front().getFile(), __FILE__);
}

TEST_P(FormatMacros, StandForOneStatementOfTheirLevelAboveTheFloor) {
    logger_.setLevel(Level::TRACE, false);
    if (evaluations_ > 0)
        ZAV_LOGF_AUDIT(logger_, "not this one");
    else
        ZAV_LOGF_TRACE(logger_, "without values");
    ZAV_LOGF_AUDIT(logger_, "{}", 1);
    ZAV_LOGF_WARNING(logger_, "{}", 2);
    ZAV_LOGF_INFO(logger_, "{}", 3);
    ZAV_LOGF_DEBUG(logger_, "{}", 4);
#undef ZAV_LOG_ACTIVE_LEVEL
#define ZAV_LOG_ACTIVE_LEVEL 20
    ZAV_LOGF_TRACE(countedLogger(), "removed {}", ++evaluations_);
    EXPECT_EQ(evaluations_, 0);
    std::vector<int> levels;
    for (const LogMessage& message : messages()) {
        levels.push_back(message.getLevel());
    }
    EXPECT_THAT(levels, ElementsAre(10, 60, 40, 30, 20));
    EXPECT_EQ(messages().front().getText(), "without values");
}

TEST_P(FormatMacros, TakeWhatTheLanguageOfFormatsHas) {
    char array[] = "array";
    const std::string longText(10000, 'x');
    const std::vector<int> numbers{1, 2};
    ZAV_LOGF_AUDIT(logger_, "{{{1:>4}{0:#x}}} {2:.{3}f} {4}", 255, "ab", 2.0, 3, array);
    EXPECT_EQ(text(), "{  ab0xff} 2.000 array");
    ZAV_LOGF_AUDIT(logger_, "{:%S} {}", std::chrono::seconds(5), fmt::join(numbers, ", "));
    EXPECT_EQ(text(), "05 1, 2");
    ZAV_LOGF_AUDIT(logger_, "{}{}", longText, longText);
    EXPECT_EQ(text(), longText + longText);
}

/// Logs with a format and expects the text that {fmt} produces.
#define EXPECT_TEXT_OF_FMT(...)                                                                              \
    do {                                                                                                     \
        ZAV_LOGF_AUDIT(logger_, __VA_ARGS__);                                                                \
        EXPECT_EQ(text(), fmt::format(__VA_ARGS__));                                                         \
    } while (false)

TEST_P(FormatMacros, WriteNumbersAsFmtDoes) {
    for (const long long number : {0LL, 7LL, -7LL, 1234567890123LL, std::numeric_limits<long long>::max(),
                                   std::numeric_limits<long long>::min()}) {
        EXPECT_TEXT_OF_FMT("{} {:d} {:x} {:#X} {:b} {:o} {:+} {: } {:08} {:<6}| {:^9}|", number, number,
                           number, number, number, number, number, number, number, number, number);
        EXPECT_TEXT_OF_FMT("{} {} {} {}", static_cast<short>(number), static_cast<signed char>(number),
                           static_cast<unsigned char>(number), static_cast<int>(number));
        EXPECT_TEXT_OF_FMT("{} {:x} {:#b} {:>30} {:c}", static_cast<unsigned long long>(number),
                           static_cast<unsigned>(number), static_cast<unsigned short>(number),
                           static_cast<unsigned long>(number), static_cast<signed char>(number) & 63);
    }
    for (const double usual : {0.25, -2.5, 1234.5, 0.00099999, 0.001, -0.0123456, 99999.9, 1e5, 0.1234567}) {
        EXPECT_TEXT_OF_FMT("{} {} {:.2f}", usual, static_cast<float>(usual), usual);
    }
    for (const double number :
         {0.0, -0.0, 0.1, 1.0, -2.5, 1e15, 1e16, 123456789.0, 1e-5, 5e-324, 1.7976931348623157e308,
          std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_TEXT_OF_FMT("{} {:.2f} {:e} {:g} {:G} {:a} {:+} {:010.3} {:#} {:<12}|", number, number, number,
                           number, number, number, number, number, number, number);
        EXPECT_TEXT_OF_FMT("{} {:.3} {:9}", static_cast<float>(number), static_cast<float>(number),
                           static_cast<float>(number));
        EXPECT_TEXT_OF_FMT("{} {:.3}", static_cast<long double>(number), static_cast<long double>(number));
    }
    EXPECT_TEXT_OF_FMT("{} {}", 0.1F, 0.1);
}

TEST_P(FormatMacros, WriteTextsAndTheLikeAsFmtDoes) {
    const std::string withZero("a\0b", 3);
    char buffer[20] = "in a buffer";
    const void* const address = buffer;
    const struct { unsigned bits : 3; } field{5};
    EXPECT_TEXT_OF_FMT("{} {:>8}|{:*^9}|{:.2}|{:s}", withZero, withZero, "\u00e4\u20ac", "cut",
                       std::string_view());
    const char* const nowhere =
        reinterpret_cast<const char*>(std::uintptr_t{16}); // only its address is shown
    EXPECT_TEXT_OF_FMT("{}{}{:20}|{:p}|{:p}", buffer, static_cast<char*>(buffer), buffer,
                       static_cast<const char*>(buffer), nowhere);
    EXPECT_TEXT_OF_FMT("{} {:d} {:>3}|{} {:d} {:>7}", 'c', 'c', 'c', true, true, false);
    EXPECT_TEXT_OF_FMT("{} {:p} {:>20} {} {}", address, address, static_cast<void*>(buffer), nullptr,
                       static_cast<const void*>(nullptr));
    ZAV_LOGF_AUDIT(logger_, "{} {}", field.bits, static_cast<int>(GREEN));
    EXPECT_EQ(text(), "5 1");
    EXPECT_TEXT_OF_FMT("{} of {}", std::chrono::milliseconds(1500), 3);
}

TEST_P(FormatMacros, ReadFormatsAsFmtDoes) {
    const std::string longText(600, 'l');
    EXPECT_TEXT_OF_FMT("");
    EXPECT_TEXT_OF_FMT("{{}}");
    EXPECT_TEXT_OF_FMT("}}{{{}}}{{", 1);
    EXPECT_TEXT_OF_FMT("12345678{}1234567{}123456789{}1", 1, 2, 3);
    EXPECT_TEXT_OF_FMT("not a brace: y | ~ \x7f \xfb \xfd {}", 1);
    EXPECT_TEXT_OF_FMT("{:}|{:}<5}|{:{}}|{:.{}f}|{}", 1, 2, 3, 5, 1.5, 2, "end");
    EXPECT_TEXT_OF_FMT("first {} then {:>{}} and {:{}.{}} {}", 0, "a", 4, 1.25, 9, 2, 'z');
    EXPECT_TEXT_OF_FMT("{1} {0} {1:>5} {0:{2}}", "a", "b", 3);
    EXPECT_TEXT_OF_FMT("{}{}{}{}{}{}{}{}{}{}{}{}{}{}{}{}{}{:{}}", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13,
                       14, 15, 16, 17, 18, 4);
    EXPECT_TEXT_OF_FMT("{:>{}}{}{}{}{}{}{}{}{}{}{}{}{}{}{}{}{}", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13,
                       14, 15, 16, 17, 18);
    EXPECT_TEXT_OF_FMT("{} {:>700} {}", longText, longText, longText);
    EXPECT_TEXT_OF_FMT(R"("raw" {})", 1);
    EXPECT_TEXT_OF_FMT("one and " FORMAT_OF_A_MACRO, 1);
    EXPECT_TEXT_OF_FMT(FORMAT_IN_AN_ARRAY, 1);
    EXPECT_TEXT_OF_FMT(FORMAT_BEHIND_A_POINTER, 1);
    ZAV_LOGF_AUDIT(logger_, "a\0b {}", [] { return 1; }());
    EXPECT_EQ(text(), std::string("a\0b 1", 5));
}

TEST_P(FormatMacros, PutAFailureToFormatIntoTheText) {
    const char* const nothing = nullptr;
    ZAV_LOGF_AUDIT(logger_, "{} {}", 1, nothing);
    EXPECT_EQ(text(), "{} {} [not formatted: string pointer is null]");
    ZAV_LOGF_AUDIT(logger_, "{} {:>8}", 1, nothing);
    EXPECT_EQ(text(), "{} {:>8} [not formatted: string pointer is null]");
    ZAV_LOGF_AUDIT(logger_, "{:p}", nothing);
    EXPECT_EQ(text(), "0x0");
    ZAV_LOGF_AUDIT(logger_, "{} {:>{}}", 1, 2, -3);
    EXPECT_EQ(text(), "{} {:>{}} [not formatted: negative width]");
    ZAV_LOGF_AUDIT(logger_, "state {} of {}", 1, Failure::EXCEPTION);
    EXPECT_EQ(text(), "state {} of {} [not formatted: out of order]");
    ZAV_LOGF_AUDIT(logger_, "{}", Failure::NUMBER);
    EXPECT_EQ(text(), "{} [not formatted: unknown exception]");
    EXPECT_THROW(ZAV_LOGF_AUDIT(logger_, "{}", Failure::MEMORY), std::bad_alloc);
}

TEST_P(FormatMacros, FollowTheLocaleOfTheCall) {
    struct Grouping : std::numpunct<char> {
        char do_thousands_sep() const override { return '\''; }
        std::string do_grouping() const override { return "\3"; }
    };
    ZAV_LOGF_AUDIT(logger_, "{:Ld} {:{}Ld}", 1234567, 1234567, 9);
    const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
    EXPECT_EQ(text(), "1234567   1234567");
    std::locale::global(before);
}

TEST_P(FormatMacros, NeedNoneOfTheirValuesAfterwards) {
    std::string user(100, 'u');
    ZAV_LOGF_ERROR(logger_, "{} {}", user, std::string("left"));
    user.assign(100, 'x');
    EXPECT_EQ(text(), std::string(100, 'u') + " left");
}
