#include "TestSupport.h"

#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iomanip>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

namespace {

namespace Shapes {
enum Plain { TRIANGLE = 3, HIDDEN = -1 };
enum Named { SQUARE };
enum class Scoped { CIRCLE };
enum Letter : char { LETTER = 'l' };
std::ostream& operator<<(std::ostream& stream, Named) {
    return stream << "square";
}
std::ostream& operator<<(std::ostream& stream, Scoped) {
    return stream << "circle";
}

struct Point {
    int x;
};
std::ostream& operator<<(std::ostream& stream, const Point& point) {
    return stream << std::setw(4) << point.x;
}
std::ostream& operator<<(std::ostream& stream, const Point* point) {
    return stream << "to" << *point;
}

/// A generic operator that uses members of a stream.
struct Generic {};
template <typename Stream>
Stream& operator<<(Stream& stream, const Generic&) {
    stream.width(3);
    return stream << 7;
}

/// Does not restore the format.
struct Careless {};
std::ostream& operator<<(std::ostream& stream, const Careless&) {
    return stream << std::hex << std::showbase << 255;
}

/// Reads the stream's position, and overwrites what was written.
struct Column {};
std::ostream& operator<<(std::ostream& stream, const Column&) {
    while (stream.tellp() < 12) {
        stream << '.';
    }
    stream.seekp(-2, std::ios::cur);
    return stream << '|';
}

struct Counted {
    mutable int count = 0;
};
std::ostream& operator<<(std::ostream& stream, Counted& counted) {
    return stream << ++counted.count;
}

struct Base {};
struct Derived : Base {};
std::ostream& operator<<(std::ostream& stream, const Base&) {
    return stream << "base";
}

struct ConvertsToNumber {
    operator int() { return 5; }
};
struct ConvertsToText {
    operator const char*() const { return "converted"; }
};
struct Constants {
    static const int SIZE = 17;
    unsigned bits : 3;
    Plain plain : 3;
};
} // namespace Shapes

// Not found by argument-dependent lookup; visible only in this file.
template <typename Element>
std::ostream& operator<<(std::ostream& stream, const std::vector<Element>& elements) {
    for (const Element& element : elements) {
        stream << '[' << element << ']';
    }
    return stream;
}
std::ostream& operator<<(std::ostream& stream, const wchar_t* text) {
    return stream << "wide:" << std::wcslen(text);
}

std::ostream& indent(std::ostream& stream) {
    return stream << "    ";
}

using namespace ZAV::Log;

class LastText : public Appender {
public:
    explicit LastText(bool synchronous) : Appender("last-text", synchronous) {}
    std::string text;

protected:
    void doOutput(const LogMessage& message) override { text = message.getText(); }
};

/// With a text formatted in the call, and with one formatted by the consumer.
class StreamedTexts : public testing::TestWithParam<bool> {
protected:
    StreamedTexts() {
        LogManager::addAsynchronousAppender(&appender_);
        logger_.addAppender(&appender_);
        logger_.audit("lets the logger see its appenders", 0, "");
    }
    ~StreamedTexts() override {
        logger_.removeAppender(&appender_);
        LogManager::removeAsynchronousAppender(&appender_);
    }

    const std::string& shown() {
        if (!appender_.isSynchronous()) {
            EXPECT_TRUE(LogManager::flush());
        }
        return appender_.text;
    }

    Logger& logger_ = LoggerFactory::getLogger("streamed");
    LastText appender_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Made, StreamedTexts, testing::Bool(), [](const auto& parameter) {
    return parameter.param ? "InTheCall" : "ByTheConsumer";
});

/// Streams an expression into a message and into a stream of the standard library.
#define EXPECT_SAME_TEXT(expression)                                                                         \
    do {                                                                                                     \
        std::ostringstream stream;                                                                           \
        stream << expression;                                                                                \
        ZAV_LOG_AUDIT(logger_, expression);                                                                  \
        EXPECT_EQ(shown(), stream.str()) << #expression;                                                     \
    } while (false)

} // namespace

TEST_P(StreamedTexts, OfNumbersAreThoseOfAStream) {
    const auto expectSame = [this](auto number) {
        EXPECT_SAME_TEXT(number);
        EXPECT_SAME_TEXT(std::hex << std::showbase << number << std::dec << ' ' << number);
        EXPECT_SAME_TEXT(std::setw(9) << std::setfill('_') << std::left << number << number);
    };
    const auto expectSameBounds = [&](auto zero) {
        using Limits = std::numeric_limits<decltype(zero)>;
        for (const auto number : {Limits::min(), Limits::max(), Limits::lowest(), zero}) {
            expectSame(number);
        }
    };
    expectSameBounds(short());
    expectSameBounds(static_cast<unsigned short>(0));
    expectSameBounds(int());
    expectSameBounds(0U);
    expectSameBounds(0L);
    expectSameBounds(0UL);
    expectSameBounds(0LL);
    expectSameBounds(0ULL);
    expectSameBounds(false);
    expectSameBounds('0');
    expectSameBounds(static_cast<signed char>('s'));
    expectSameBounds(static_cast<unsigned char>('u'));
    expectSameBounds(0.0F);
    expectSameBounds(0.0L);
    for (const double number : {-0.0, std::nan(""), -std::nan(""), HUGE_VAL, -HUGE_VAL, 5e-324}) {
        expectSame(number);
        expectSame(static_cast<float>(number));
        expectSame(static_cast<long double>(number));
    }
}

TEST_P(StreamedTexts, OfFloatingPointNumbersAreRoundedAlike) {
    std::vector<double> numbers;
    for (int exponent = -8; exponent < 9; ++exponent) {
        for (const double digits :
             {1.0, 9.99999, 9.999994999, 9.999995, 9.9999951, 1.000005, 2.5, 1.234565}) {
            const double number = digits * std::pow(10, exponent);
            numbers.insert(numbers.end(), {number, std::nextafter(number, 0), std::nextafter(number, 1e9)});
        }
    }
    std::mt19937_64 random(20130507);
    const int rounds = GetParam() ? 30000 : 500; // waits for the consumer after each number
    for (int i = 0; i < rounds; ++i) {
        const std::uint64_t bits = random();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        numbers.push_back(number);
        // Typical values: quarters, prices, halves of the sixth digit, ratios.
        const auto count = static_cast<double>(bits % 4000000);
        numbers.insert(numbers.end(), {count / 4, count / 100, 100000 + count / 4, -1 / (count + 1), count});
    }
    std::ostringstream stream;
    for (const double number : numbers) {
        stream.str(std::string());
        stream << number;
        MessageStream message(logger_);
        message.write(number);
        message.logTo(logger_, Level::AUDIT, 0, "");
        ASSERT_EQ(shown(), stream.str());
    }
}

TEST_P(StreamedTexts, OfTextsAndPointersAreThoseOfAStream) {
    char array[] = "array";
    const unsigned char bytes[] = "bytes";
    const std::string text("with a \0 inside", 15);
    const std::string longText(100000, 'x');
    int number = 1;
    volatile int changing = 2;
    EXPECT_SAME_TEXT("literal" << array << bytes << text << std::string_view(text) << std::string() << 'c');
    EXPECT_SAME_TEXT(longText << longText << 1 << 'c' << 2.5);
    EXPECT_SAME_TEXT(std::setw(8) << "text" << std::setw(8) << text << std::setw(3) << 'c' << "end");
    EXPECT_SAME_TEXT(&number << ' ' << static_cast<const void*>(&number) << ' ' << nullptr << ' '
                             << text.data());
    EXPECT_SAME_TEXT(static_cast<void*>(nullptr) << ' ' << static_cast<void*>(&number));
    EXPECT_SAME_TEXT(&changing << changing << bool(changing));
}

TEST_P(StreamedTexts, OfOtherTypesAreThoseOfAStream) {
    using namespace Shapes;
    Counted counted;
    ConvertsToNumber converts;
    int number = 4;
    const Point point{12};
    const std::vector<int> numbers{1, 2};
    const std::vector<Point> points{point};
    Constants constants{};
    constants.bits = 5;
    constants.plain = TRIANGLE;
    EXPECT_SAME_TEXT(TRIANGLE << HIDDEN << SQUARE << Scoped::CIRCLE << LETTER << std::hex << HIDDEN);
    EXPECT_SAME_TEXT("at " << point << ' ' << &point << Generic() << 1.5 << Derived() << Base());
    EXPECT_SAME_TEXT("col" << Column() << 1 << Column() << "end");
    EXPECT_SAME_TEXT("col" << Column());
    EXPECT_SAME_TEXT(Careless() << 255 << ' ' << 2.5);
    EXPECT_SAME_TEXT(converts << ConvertsToText() << std::ref(number) << std::atomic<int>(3)
                              << std::true_type());
    EXPECT_SAME_TEXT(constants.bits << Constants::SIZE << constants.plain);
    EXPECT_SAME_TEXT(1 << numbers << 2.5 << L"wide" << points);
    EXPECT_SAME_TEXT(std::make_error_code(std::errc::timed_out) << std::quoted("a\"b") << 1);
    ZAV_LOG_AUDIT(logger_, counted << 'x' << counted);
    EXPECT_EQ(shown(), "1x2");
}

TEST_P(StreamedTexts, KeepTheFormatThatAManipulatorLeft) {
    EXPECT_SAME_TEXT("a" << 10 << std::hex << 10 << "b" << -1 << static_cast<short>(-1) << std::dec << 10);
    EXPECT_SAME_TEXT(std::fixed << std::setprecision(3) << 2.5 << ' ' << 1.0F << std::defaultfloat << 2.5);
    EXPECT_SAME_TEXT(std::boolalpha << true << std::noboolalpha << true << std::showpos << 5 << 2.5 << "5");
    EXPECT_SAME_TEXT(1 << std::endl << 2 << std::flush << std::ends << 3 << indent << 4);
    EXPECT_SAME_TEXT(std::setw(6) << 1 << 2 << std::setfill('*') << 3 << std::setw(6) << 4 << std::setw(6));
    EXPECT_SAME_TEXT(std::left << std::setw(6) << true << std::uppercase << std::scientific << 1e10);
    EXPECT_SAME_TEXT(1 << 2.5);
    std::thread([this] { // its buffer grows with this text
        const std::string longText(495, 'x');
        EXPECT_SAME_TEXT(longText << 1.0 << 2.0 << std::hex << 255 << indent << 3.0L);
    })
        .join();
}

TEST_P(StreamedTexts, FollowTheLocaleOfNewStreams) {
    struct Grouping : std::numpunct<char> {
        char do_thousands_sep() const override { return '\''; }
        std::string do_grouping() const override { return "\3"; }
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
    EXPECT_SAME_TEXT("text" << 1234567 << ' ' << 2.5 << std::hex << 1234567);
    std::locale::global(before);
    EXPECT_SAME_TEXT("text" << 1234567 << ' ' << 2.5);
    std::ostringstream stream;
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    stream << notANumber << static_cast<void*>(nullptr) << 1234567;
    ZAV_LOG_AUDIT(logger_, notANumber << static_cast<void*>(nullptr) << 1234567);
    std::locale::global(std::locale(std::locale(), new Grouping)); // before the consumer formats
    EXPECT_EQ(shown(), stream.str());
    std::locale::global(before);
}

TEST_P(StreamedTexts, SurviveWhatIsStreamedIntoThem) {
    const auto logged = [this](const char* text) {
        ZAV_LOG_AUDIT(logger_, text << std::hex << 255);
        return shown();
    };
    ZAV_LOG_AUDIT(logger_, "outer " << logged("inner ") << ' ' << 255 << ' ' << logged("again "));
    EXPECT_EQ(shown(), "outer inner ff 255 again ff");

    const auto fail = []() -> int { throw std::runtime_error("not streamed"); };
    EXPECT_THROW(ZAV_LOG_AUDIT(logger_, "lost " << std::hex << fail()), std::runtime_error);
    const char* const nothing = nullptr;
    ZAV_LOG_AUDIT(logger_, "text " << nothing << ' ' << 255);
    EXPECT_EQ(shown(), "text (null) 255");

    MessageStream message(logger_);
    message.stream() << std::hex << 255;
    MessageInserter(message) << 255;
    message.logTo(logger_, Level::AUDIT, 0, "");
    EXPECT_EQ(shown(), "ffff");
}

/// In one of three processes under Wine the runtime destroys thread_local objects only in the first thread,
/// even without the library; and it may have freed their memory by then, so these have none.
TEST_P(StreamedTexts, AreThereUntilAThreadHasEnded) {
    static Logger* logger;
    static bool isDestroyed;
    struct LastWords {
        void make() {}
        ~LastWords() {
            ZAV_LOG_AUDIT(*logger, "last words " << 1 << std::setw(2) << 2);
            isDestroyed = true;
        }
    };
    logger = &logger_;
    isDestroyed = false;
    std::thread([this] {
        thread_local LastWords lastWords;
        lastWords.make(); // first, so it is destroyed after what the first message creates
        ZAV_LOG_AUDIT(logger_, "first words");
    }).join();
#if defined(__linux__)
    ASSERT_TRUE(isDestroyed);
#endif
    if (!isDestroyed) {
        GTEST_SKIP() << "the C++ runtime leaves thread_local objects of this process alone";
    }
    EXPECT_EQ(shown(), "last words 1 2");
}
