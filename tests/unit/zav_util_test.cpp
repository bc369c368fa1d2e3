#include "TestSupport.h"
#include "TimeZone.h"

#include "zav-util/Conversions.h"
#include "zav-util/Properties.h"
#include "zav-util/SystemInformation.h"
#include "zav-util/TimeUtils.h"
#include "zav-util/UtilException.h"

#include <limits>

using namespace ZAV;
using namespace ZAV::Util;
using namespace ZAV::Util::TimeUtils;
using namespace testing;

TEST(Conversions, ReadsWholeNumbersAndClampsThemTo32Bits) {
    EXPECT_EQ(toInteger("42"), 42);
    EXPECT_EQ(toInteger("-7"), -7);
    EXPECT_EQ(toInteger("  +15"), 15);
    EXPECT_EQ(toInteger(""), 0);
    EXPECT_EQ(toInteger("2147483648"), 2147483647);
    EXPECT_EQ(toInteger("-99999999999999999999"), std::numeric_limits<std::int32_t>::min());
}

TEST(Conversions, RejectsWhatIsNoWholeNumber) {
    for (const std::string text : {"12a", "1.5", "0x10", "15 ", "abc", "  ", "-"}) {
        EXPECT_EQ(TestSupport::textThrownBy<UtilException>([&] { toInteger(text); }),
                  "Can't convert " + text + " to integer");
    }
}

TEST(SystemInformation, NamesProgramAndHostWithoutPathAndDomain) {
    EXPECT_THAT(getProgramName(), AnyOf("zav-log-unit-tests", "zav-log-unit-tests.exe"));
    EXPECT_THAT(getHostName(), AllOf(Not(IsEmpty()), Not(HasSubstr("."))));
}

TEST(Time, CountsUnitsInWrappingMicroseconds) {
    EXPECT_EQ(Time(5, MIN), Time(300000000, USEC));
    EXPECT_EQ(Time(2, HOUR) + Time(22, HOUR), Time(1, DAY));
    EXPECT_EQ(Time(7, static_cast<TimeUnit>(9)), Time(7, USEC));
    EXPECT_EQ(Time(), Time(0, DAY));
    EXPECT_GT(Time(static_cast<std::uint64_t>(-1), MIN), Time::now());
    EXPECT_LT(Time::now() + Time(static_cast<std::uint64_t>(-1), MIN), Time::now());
    EXPECT_EQ(Time::now().microseconds() % 1000, 0U);
}

TEST(Time, TextFollowsTheTimeZoneOfTheProcess) {
    const Time time(1367935407123456, USEC);
    TestSupport::setTimeZone("UTC0");
    EXPECT_EQ(time.toSecondsString(), "2013.05.07 14:03:27");
    EXPECT_EQ(time.toString(), "2013.05.07 14:03:27:123456");
    TestSupport::setTimeZone("AAA-3");
    EXPECT_EQ(time.toString(), "2013.05.07 17:03:27:123456");
    TestSupport::setTimeZone("AAA-4");
    EXPECT_EQ(time.toString(), "2013.05.07 18:03:27:123456");
    EXPECT_EQ(Time(1, SEC).toString(), "1970.01.01 04:00:01:000000");
}

TEST(Properties, TakePairsInBracesHoweverTheyAreWritten) {
    const std::map<std::string, std::string> one{{"appender.c", "StdoutAppender"}};
    const std::map<std::string, std::string> two{{"a", "b"}, {"c", "d"}};
    const std::string a = "a";
    const std::string d = "d";
    const Properties copied = {{"appender.c", "StdoutAppender"}};
    const auto passed = [](const Properties& properties) { return properties; };
    EXPECT_EQ((Properties{{"appender.c", "StdoutAppender"}}), one);
    EXPECT_EQ(Properties({{"appender.c", "StdoutAppender"}}), one);
    EXPECT_EQ((Properties{{{"appender.c", "StdoutAppender"}}}), one);
    EXPECT_EQ(passed({{"appender.c", "StdoutAppender"}}), one);
    EXPECT_EQ(copied, one);
    EXPECT_EQ(Properties{copied}, one);
    EXPECT_EQ((Properties{{"a", "b"}, {"c", "d"}}), two);
    EXPECT_EQ((Properties{{{"a", "b"}, {"c", "d"}}}), two); // not iterator ranges
    EXPECT_EQ(Properties({{"a", "b"}, {"c", "d"}}), two);
    EXPECT_EQ((Properties{{a, "b"}, {"c", d}}), two);
    EXPECT_EQ((Properties{std::make_pair("a", "b"), Properties::value_type("c", d), {"a", "later"}}), two);
    Properties assigned{{a, d}};
    assigned = {{"a", "b"}, {"c", "d"}};
    EXPECT_EQ(assigned, two);
    assigned = {};
    EXPECT_THAT(assigned, IsEmpty());
    EXPECT_THAT(Properties{}, IsEmpty());
    EXPECT_THAT(TestSupport::textThrownBy<UtilException>([] { Properties{"missing.properties"}; }),
                HasSubstr("missing.properties"));
}

namespace {

class PropertyParser : public Test {
protected:
    Properties parse(const std::string& content) {
        TestSupport::writeFile(name_, content);
        return Properties(name_);
    }

    const TestSupport::TemporaryDirectory directory_;
    const std::string name_ = directory_ / "test.properties";
};

} // namespace

TEST_F(PropertyParser, GivesTrimmedPairsInKeyOrder) {
    Properties properties =
        parse("# comment\n\nb = C:\\logs\\app\n  a.x-y_z\t=\t some  value  \r\n\r\na==1=");
    EXPECT_THAT(properties.getKeys(), ElementsAre("a", "a.x-y_z", "b"));
    EXPECT_EQ(properties["a.x-y_z"], "some  value");
    EXPECT_EQ(properties["b"], "C:\\logs\\app");
    std::string value = "kept";
    EXPECT_FALSE(properties.getProperty("A", value));
    EXPECT_EQ(value, "kept");
    EXPECT_TRUE(properties.getProperty("a", value));
    EXPECT_EQ(value, "1");
    EXPECT_TRUE(parse("").empty());
}

TEST_F(PropertyParser, RejectsTheFirstOffendingLine) {
    const std::string valueSymbols = ". Allowed symbols are letters, digits and -_.:/\\ ";
    const std::pair<std::string, std::string> problems[] = {
        {"# c\n\nx=1\nx=2\ny\n", "a property redefinition on line 4; key = 'x'"},
        {"a=b=c", "a malformed property on line 1"},
        {"key=", "a malformed property on line 1"},
        {"a=1\n   \n", "a malformed property on line 2"},
        {"  # late comment", "a malformed property on line 1"},
        {" =value", "no key on line 1"},
        {"key= ", "no value on line 1"},
        {"a b= ", "a malformed key on line 1. Allowed symbols are letters, digits and -_."},
        {"dir = C:\\app # comment", "a malformed value on line 1" + valueSymbols},
        {"a = tab\there", "a malformed value on line 1" + valueSymbols},
        {"a = \xC3\xA4", "a malformed value on line 1" + valueSymbols}};
    for (const auto& [content, problem] : problems) {
        EXPECT_EQ(TestSupport::textThrownBy<UtilException>([&, text = content] { parse(text); }),
                  "Property file " + name_ + " contains " + problem);
    }
}
