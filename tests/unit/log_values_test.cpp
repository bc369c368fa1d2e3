#include "TestSupport.h"

#include "log/AppenderOptions.h"
#include "log/ConfigurationMessage.h"
#include "log/LogContext.h"
#include "log/LogException.h"
#include "log/LogLine.h"
#include "log/LogValues.h"
#include "log/MessageFilter.h"
#include "log/reentrancy/LibraryCall.h"
#include "log/text/ValueText.h"
#include "platform/Threads.h"

#include <boost/make_shared.hpp>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <future>
#include <gmock/gmock.h>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <string_view>
#include <thread>

using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

namespace {

/// A logger with a synchronous and an asynchronous appender, which must get equal messages.
class LogValues : public testing::Test {
protected:
    LogValues() {
        logger_.addAppender(&synchronous_);
        logger_.addAppender(&asynchronous_);
        LogManager::addAsynchronousAppender(&asynchronous_);
    }
    ~LogValues() override {
        logger_.removeAppender(&asynchronous_);
        logger_.removeAppender(&synchronous_);
        LogManager::removeAsynchronousAppender(&asynchronous_);
    }

    /// \return the messages of the synchronous appender, after checking that the other one has the same
    const std::vector<LogMessage>& messages() {
        LogManager::flush();
        EXPECT_EQ(asynchronous_.messages.size(), synchronous_.messages.size());
        for (std::size_t i = 0; i < asynchronous_.messages.size(); ++i) {
            const LogMessage& message = asynchronous_.messages[i];
            const LogMessage& expected = synchronous_.messages[i];
            EXPECT_EQ(message.getText(), expected.getText());
            EXPECT_EQ(message.getMessage(), expected.getMessage());
            EXPECT_EQ(message.getValues(), expected.getValues());
            EXPECT_EQ(message.getContext(), expected.getContext());
            EXPECT_EQ(message.getThread(), expected.getThread());
        }
        return synchronous_.messages;
    }

    const LogMessage& message() { return messages().back(); }

    Logger& logger_ = LoggerFactory::getLogger("shop");
    RecordingAppender synchronous_{"synchronous"};
    RecordingAppender asynchronous_{"asynchronous", false};
};

/// A logger with only an asynchronous appender, for which no message object is filled in the call.
class QueuedLogValues : public LogValues {
protected:
    QueuedLogValues() { logger_.removeAppender(&synchronous_); }

    const LogMessage& queued() {
        LogManager::flush();
        return asynchronous_.messages.back();
    }
};

} // namespace

TEST_F(LogValues, StandBehindTheTextAndAsPairs) {
    const std::string text = "order charged";
    ZAV_LOGV_ERROR(logger_, text, "order", 17, "amount", 4.25);
    EXPECT_EQ(message().getText(), "order charged order=17 amount=4.25");
    EXPECT_EQ(message().getMessage(), "order charged");
    EXPECT_THAT(message().getValues(), ElementsAre(Pair("order", "17"), Pair("amount", "4.25")));
    EXPECT_EQ(message().getLevel(), Level::ERROR);
    EXPECT_EQ(message().getLine(), __LINE__ - 5);
    EXPECT_EQ(message().getFile(), __FILE__);

    ZAV_LOGV_ERROR(logger_, "", "a", 1, "a", 2);
    EXPECT_EQ(message().getText(), "a=1 a=2");
    EXPECT_EQ(message().getMessage(), "");
    EXPECT_THAT(message().getValues(), ElementsAre(Pair("a", "1"), Pair("a", "2")));

    ZAV_LOGV_ERROR(logger_, "nothing else");
    EXPECT_EQ(message().getText(), "nothing else");
    EXPECT_THAT(message().getValues(), IsEmpty());

    ZAV_LOG_ERROR(logger_, "no pairs, after " << 2 << " with some");
    EXPECT_EQ(message().getMessage(), "no pairs, after 2 with some");
    EXPECT_THAT(message().getValues(), IsEmpty());
}

TEST_F(LogValues, ShowNumbersInTheShortestFormAndOtherTypesAsTheirText) {
    const char array[] = "array";
    const char* const null = nullptr;
    volatile int changing = 7;
    ZAV_LOGV_ERROR(logger_, "t", "c", 'x', "b", true, "n", false, "sc", static_cast<signed char>(-5), "uc",
                   static_cast<unsigned char>(200), "ll", std::numeric_limits<long long>::min(), "ull",
                   std::numeric_limits<unsigned long long>::max(), "s", std::string("s"), "v",
                   std::string_view("view"), "a", array, "null", null, "volatile", changing);
    EXPECT_EQ(message().getText(), "t c=x b=true n=false sc=-5 uc=200 ll=-9223372036854775808 "
                                   "ull=18446744073709551615 s=s v=view a=array null=\"\" volatile=7");
    ZAV_LOGV_ERROR(logger_, null, null, null);
    EXPECT_EQ(message().getText(), "_=\"\"");
    ZAV_LOGV_ERROR(logger_, "t", "d", 0.1, "f", 0.1F, "third", 1.0 / 3, "huge", 1e300, "inf", HUGE_VAL, "ld",
                   2.5L);
    EXPECT_EQ(message().getText(), "t d=0.1 f=0.1 third=0.3333333333333333 huge=1e+300 inf=inf ld=2.5");
    for (const long double value : {0.1L, 1.0L / 3, -std::numeric_limits<long double>::max(),
                                    std::numeric_limits<long double>::min()}) {
        const LogContext context("l", value);
        ZAV_LOGV_ERROR(logger_, "t", "l", value, "nothing", nullptr);
        const std::string text = message().getValues()[0].second;
        EXPECT_EQ(std::strtold(text.c_str(), nullptr), value) << text;
        EXPECT_THAT(message().getContext(), ElementsAre(Pair("l", text)));
    }
}

TEST(ShortestFloat, IsWhatTheStandardLibraryWrites) {
    const auto expectSame = [](auto number) {
        char expected[64];
        char actual[ZAV::Log::SHORTEST_FLOAT_SIZE];
        const std::string_view text(
            actual, static_cast<std::size_t>(ZAV::Log::writeShortestFloat(actual, number) - actual));
        ASSERT_EQ(text,
                  std::string_view(
                      expected,
                      static_cast<std::size_t>(
                          std::to_chars(std::begin(expected), std::end(expected), number).ptr - expected)));
    };
    std::mt19937_64 random(17);
    double power = 1e-6;
    for (int exponent = -6; exponent <= 8; ++exponent, power *= 10) {
        for (int count = 0; count < 2000; ++count) {
            const double digits = static_cast<double>(random() % 2'000'000);
            for (const double number : {digits * power, -digits * power, digits / 1e6, digits}) {
                expectSame(number);
                expectSame(static_cast<float>(number));
                expectSame(std::nextafter(number, 1e9));
                expectSame(std::nextafterf(static_cast<float>(number), 1e9F));
            }
        }
    }
}

TEST_F(LogValues, AreQuotedWhereTheyCouldBeReadWrong) {
    const std::pair<std::string, std::string> cases[] = {
        {"plain-text_1:2,3;'", "plain-text_1:2,3;'"},
        {"", R"("")"},
        {"a b", R"("a b")"},
        {"a=b", R"("a=b")"},
        {R"(say "no")", R"("say \"no\"")"},
        {R"(C:\tmp)", R"("C:\\tmp")"},
        {"\n\r\t", R"("\n\r\t")"},
        {std::string("\0\x01\x1f\x7f", 4), R"("\x00\x01\x1f\x7f")"},
        {"\xc2\x85", R"("\xc2\x85")"}, // NEL, a line break for some programs
        {"gr\xc3\xbc\xc3\x9f\x65", "gr\xc3\xbc\xc3\x9f\x65"},
        {"\xff\x85", "\xff\x85"},
    };
    for (const auto& [value, shown] : cases) {
        ZAV_LOGV_ERROR(logger_, "t", "k", value);
        EXPECT_EQ(message().getText(), "t k=" + shown);
        EXPECT_THAT(message().getValues(), ElementsAre(Pair("k", value)));
        const LogContext context("k", value);
        ZAV_LOG_ERROR(logger_, "t");
        EXPECT_THAT(message().getContext(), ElementsAre(Pair("k", value)));
    }
}

TEST_F(LogValues, HaveKeysOfFewCharacters) {
    const LogContext context("\xc3\xbc", 1);
    ZAV_LOGV_ERROR(logger_, "t", "a b", 1, "", 2, std::string("Az09_.-"), 3, std::string_view("\0=\"\n", 4),
                   4);
    EXPECT_EQ(message().getText(), "t a_b=1 _=2 Az09_.-=3 ____=4");
    EXPECT_THAT(message().getContext(), ElementsAre(Pair("__", "1")));
}

TEST_F(LogValues, AreLeftAloneByEscape) {
    ZAV_LOGV_ERROR(logger_, "two\nlines", "path", R"(C:\tmp)");
    const AppenderOptions options("A", ZAV::Util::Properties{{"appender.A.escape", "true"}});
    EXPECT_THAT(options.formatLine(message()), testing::EndsWith(R"(ERROR two\nlines path="C:\\tmp")"));
    EXPECT_THAT(formatLogLine(message()), testing::EndsWith("ERROR two\nlines path=\"C:\\\\tmp\""));
}

TEST_F(LogValues, AreNotEvaluatedBelowTheLevel) {
    logger_.setLevel(Level::INFO, false);
    int calls = 0;
    const auto value = [&calls] { return ++calls; };
    ZAV_LOGV_DEBUG(logger_, "t", "k", value());
    EXPECT_EQ(calls, 0);
    if (calls == 0)
        ZAV_LOGV_AUDIT(logger_, "t", "k", value());
    else
        ZAV_LOGV_TRACE(logger_, "t", "k", value());
    EXPECT_EQ(message().getText(), "t k=1");
}

TEST_F(QueuedLogValues, AreTakenWhenTheCallIsMade) {
    std::string text = "text";
    std::string value = "value";
    {
        const LogContext context("k", value);
        ZAV_LOGV_ERROR(logger_, text, "v", value);
        ZAV_LOG_ERROR(logger_, "streamed " << 1);
    }
    text = value = "gone";
    EXPECT_EQ(queued().getText(), "streamed 1");
    EXPECT_THAT(queued().getContext(), ElementsAre(Pair("k", "value")));
    EXPECT_EQ(asynchronous_.messages[0].getText(), "text v=value");
    EXPECT_EQ(asynchronous_.messages[0].getMessage(), "text");
    EXPECT_THAT(asynchronous_.messages[0].getContext(), ElementsAre(Pair("k", "value")));
    EXPECT_EQ(queued().getThread(), ZAV::Platform::currentThreadId());
}

TEST_F(LogValues, AreThereForFiltersAndInWhatIsReportedOfAFailedAppender) {
    struct Filter : MessageFilter {
        bool accept(const LogMessage& message) override {
            values.push_back(message.getValues());
            return true;
        }
        std::vector<LogMessage::Pairs> values;
    };
    const auto filter = boost::make_shared<Filter>();
    const auto fails = [](const LogMessage&) { throw LogException("full"); };
    CallingAppender failing(fails);
    CallingAppender failingLater(fails, false);
    RecordingAppender filtered("filtered", true, {filter});
    RecordingAppender filteredLater("filtered later", false, {filter});
    RecordingListener reports;
    LogManager::registerCommandListener("EXCEPTION", &reports);
    const std::vector<Appender*> appenders = {&failing, &failingLater, &filtered, &filteredLater};
    for (Appender* const appender : appenders) {
        logger_.addAppender(appender);
        if (!appender->isSynchronous()) {
            LogManager::addAsynchronousAppender(appender);
        }
    }
    ZAV_LOGV_ERROR(logger_, "order charged", "order", 17);
    EXPECT_EQ(message().getText(), "order charged order=17");
    const LogMessage::Pairs values = {{"order", "17"}};
    EXPECT_THAT(filter->values, ElementsAre(values, values));
    EXPECT_THAT(reports.arguments, ElementsAre(testing::EndsWith(" ERROR order charged order=17"),
                                               testing::EndsWith(" ERROR order charged order=17")));
    for (Appender* const appender : appenders) {
        logger_.removeAppender(appender);
        LogManager::removeAsynchronousAppender(appender);
    }
    LogManager::unregisterCommandListener("EXCEPTION");
}

/// A listener logs too much while another thread holds the logger.
TEST_F(LogValues, GoWithMessagesThatAreDeferredAndAreShownOfThoseThatAreDiscarded) {
    LogManager::init(ZAV::Util::Properties{{"zav.log.AsynchronousDispatcher.maxQueueSize", "-1"}});
    std::promise<void> entered;
    std::promise<void> released;
    CallingAppender holding([&](const LogMessage& message) {
        if (message.getText() == "held") {
            entered.set_value();
            released.get_future().wait();
        }
    });
    logger_.addAppender(&holding);
    std::thread writer([&] { logger_.error("held"); });
    entered.get_future().wait();
    CallingListener listener([&](const std::string&) {
        const LogContext context("request", "r1");
        for (int number = 0; number <= DeferredMessages::MAX_OF_A_THREAD; ++number) {
            ZAV_LOGV_ERROR(logger_, "text", "number", number, "n", "a b");
        }
        released.set_value();
        writer.join();
    });
    LogManager::registerCommandListener("X", &listener);
    const StreamCapture errors(std::cerr);
    LogManager::command("X", "");
    LogManager::unregisterCommandListener("X");
    EXPECT_THAT(errors.text(),
                testing::EndsWith(" shop " + std::string(__FILE__) + ":" + std::to_string(__LINE__ - 10) +
                                  " ERROR text number=0 n=\"a b\"\n"));
    EXPECT_EQ(messages()[1].getText(), "text number=1 n=\"a b\"");
    EXPECT_THAT(messages()[1].getValues(), ElementsAre(Pair("number", "1"), Pair("n", "a b")));
    EXPECT_THAT(messages()[1].getContext(), ElementsAre(Pair("request", "r1")));
    EXPECT_EQ(messages()[1].getThread(), ZAV::Platform::currentThreadId());
    logger_.removeAppender(&holding);
    LogManager::finish();
}

TEST_F(QueuedLogValues, AreShownOfAMessageThatTheFullQueueDiscards) {
    LogManager::init(ZAV::Util::Properties{{"zav.log.AsynchronousDispatcher.maxQueueSize", "2"}});
    std::promise<void> entered;
    std::promise<void> released;
    CallingAppender holding(
        [&](const LogMessage& message) {
            if (message.getText() == "held") {
                entered.set_value();
                released.get_future().wait();
            }
        },
        false);
    logger_.addAppender(&holding);
    LogManager::addAsynchronousAppender(&holding);
    logger_.error("held");
    entered.get_future().wait();
    {
        const StreamCapture errors(std::cerr);
        for (int number = 0; number < 8; ++number) {
            ZAV_LOGV_ERROR(logger_, "text", "number", number);
        }
        EXPECT_THAT(errors.text(), HasSubstr(" ERROR text number=0\n"));
    }
    released.set_value();
    LogManager::flush();
    logger_.removeAppender(&holding);
    LogManager::removeAsynchronousAppender(&holding);
    LogManager::finish();
}

using LogContextTest = LogValues;

TEST_F(LogContextTest, NestsAndHidesOuterPairsOfTheSameKey) {
    const LogContext outer("request", "r1");
    const LogContext user("user", std::string("u"));
    {
        const LogContext inner("request", 2);
        ZAV_LOG_ERROR(logger_, "inside");
        EXPECT_THAT(message().getContext(), ElementsAre(Pair("user", "u"), Pair("request", "2")));
        EXPECT_EQ(message().getText(), "inside");
    }
    logger_.error("after");
    EXPECT_THAT(message().getContext(), ElementsAre(Pair("request", "r1"), Pair("user", "u")));
    logger_.config(ConfigurationMessage("configuration"));
    EXPECT_THAT(message().getContext(), ElementsAre(Pair("request", "r1"), Pair("user", "u")));
}

TEST_F(LogContextTest, MayEndInAnyOrder) {
    auto first = std::make_unique<const LogContext>("a", std::string(1000, 'a'));
    auto second = std::make_unique<const LogContext>("b", 2);
    const LogContext third("c", 3);
    first.reset();
    ZAV_LOG_ERROR(logger_, "t");
    EXPECT_THAT(message().getContext(), ElementsAre(Pair("b", "2"), Pair("c", "3")));
    second.reset();
    ZAV_LOG_ERROR(logger_, "t");
    EXPECT_THAT(message().getContext(), ElementsAre(Pair("c", "3")));
}

TEST_F(LogContextTest, MayEndInAnotherThread) {
    auto first = std::make_unique<const LogContext>("a", 1);
    const LogContext second("b", 2);
    auto third = std::make_unique<const LogContext>("c", 3);
    std::thread([&] {
        first.reset();
        third.reset();
    }).join();
    ZAV_LOG_ERROR(logger_, "t");
    EXPECT_THAT(message().getContext(), ElementsAre(Pair("b", "2")));
    const LogContext fourth("d", 4);
    ZAV_LOG_ERROR(logger_, "t");
    EXPECT_THAT(message().getContext(), ElementsAre(Pair("b", "2"), Pair("d", "4")));

    std::unique_ptr<const LogContext> left; // outlives its thread, whose memory the sanitizers check
    std::unique_ptr<const LogContext> other;
    std::thread([&] {
        left = std::make_unique<const LogContext>("left", 5);
        other = std::make_unique<const LogContext>("other", 6);
        std::thread([&other] { other.reset(); }).join();
    }).join();
    left.reset();
    ZAV_LOG_ERROR(logger_, "t");
    EXPECT_THAT(message().getContext(), SizeIs(2));
}

TEST_F(LogContextTest, BelongsToItsThreadWhoseIdEveryMessageHas) {
    const LogContext context("request", 1);
    std::uint64_t threadId = 0;
    std::thread([&] {
        threadId = ZAV::Platform::currentThreadId();
        ZAV_LOG_ERROR(logger_, "without");
        const LogContext own("own", 2);
        ZAV_LOG_ERROR(logger_, "with");
    }).join();
    ZAV_LOG_ERROR(logger_, "here");
    ASSERT_THAT(messages(), SizeIs(3));
    EXPECT_THAT(messages()[0].getContext(), IsEmpty());
    EXPECT_THAT(messages()[1].getContext(), ElementsAre(Pair("own", "2")));
    EXPECT_THAT(messages()[2].getContext(), ElementsAre(Pair("request", "1")));
    EXPECT_EQ(messages()[1].getThread(), threadId);
    EXPECT_EQ(messages()[2].getThread(), ZAV::Platform::currentThreadId());
    EXPECT_NE(threadId, ZAV::Platform::currentThreadId());
    EXPECT_EQ(makeMessage("made").getThread(), 0U);
}
