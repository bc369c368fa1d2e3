#include "TestSupport.h"
#include "TimeZone.h"

#include "platform/LocalTime.h"
#include "zav-util/Conversions.h"
#include "zav-util/FileUtils.h"
#include "zav-util/Properties.h"
#include "zav-util/SystemInformation.h"
#include "zav-util/TimeUtils.h"
#include "zav-util/UtilException.h"

#include <gmock/gmock.h>
#include <limits>

using namespace ZAV;
using namespace ZAV::Util;
using namespace ZAV::Util::TimeUtils;
using testing::AllOf;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

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

TEST(Conversions, WritesNumbersOfAnySize) {
    EXPECT_EQ(toString(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(toString(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(format("%s:%06d", "a", 123), "a:000123");
}

TEST(FileUtils, BaseNameTakesBothSeparators) {
    EXPECT_EQ(FileUtils::baseName("a/b\\c.log"), "c.log");
    EXPECT_EQ(FileUtils::baseName("plain"), "plain");
    EXPECT_EQ(FileUtils::baseName("dir/"), "");
}

TEST(SystemInformation, NamesProgramAndHostWithoutPathAndDomain) {
    EXPECT_THAT(getProgramName(), AnyOf("zav-log-unit-tests", "zav-log-unit-tests.exe"));
    EXPECT_THAT(getHostName(), AllOf(Not(IsEmpty()), Not(HasSubstr("."))));
}

TEST(UtilException, ShowsItsSourceLocation) {
    EXPECT_STREQ(UtilException("broken", "Some.cpp", 7).what(), "broken from Some.cpp:7");
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

namespace {

class PropertyFile : public testing::Test {
protected:
    Properties parse(const std::string& content) {
        writeFile(name_, content);
        return Properties(name_);
    }

    std::string rejection(const std::string& content) {
        return TestSupport::textThrownBy<UtilException>([&] { parse(content); });
    }

    /// The rejection's text without the beginning that all share.
    std::string problem(const std::string& content) {
        const std::string beginning = "Property file " + name_ + " contains ";
        const std::string text = rejection(content);
        EXPECT_THAT(text, StartsWith(beginning));
        return text.substr(std::min(beginning.size(), text.size()));
    }

    TestSupport::TemporaryDirectory directory_;
    std::string name_ = directory_ / "test.properties";

private:
    static void writeFile(const std::string& name, const std::string& content) {
        TestSupport::writeFile(name, content);
    }
};

} // namespace

TEST_F(PropertyFile, GivesTrimmedPairsInKeyOrder) {
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

TEST_F(PropertyFile, RejectsTheFirstOffendingLine) {
    const std::string valueSymbols = ". Allowed symbols are letters, digits and -_.:/\\ ";
    EXPECT_EQ(problem("# c\n\nx=1\nx=2\ny\n"), "a property redefinition on line 4; key = 'x'");
    EXPECT_EQ(problem("a=b=c"), "a malformed property on line 1");
    EXPECT_EQ(problem("key="), "a malformed property on line 1");
    EXPECT_EQ(problem("a=1\n   \n"), "a malformed property on line 2");
    EXPECT_EQ(problem("  # late comment"), "a malformed property on line 1");
    EXPECT_EQ(problem(" =value"), "no key on line 1");
    EXPECT_EQ(problem("key= "), "no value on line 1");
    EXPECT_EQ(problem("a b= "), "a malformed key on line 1. Allowed symbols are letters, digits and -_.");
    EXPECT_EQ(problem("dir = C:\\app # comment"), "a malformed value on line 1" + valueSymbols);
    EXPECT_EQ(problem("a = tab\there"), "a malformed value on line 1" + valueSymbols);
    EXPECT_EQ(problem("a = \xC3\xA4"), "a malformed value on line 1" + valueSymbols);
}

TEST_F(PropertyFile, ThatCannotBeReadIsReportedWithItsName) {
    const std::string missing = directory_ / "missing";
    EXPECT_THAT(TestSupport::textThrownBy<UtilException>([&] { Properties{missing}; }),
                StartsWith("Unable to open file: " + missing + " from FileUtils.cpp:"));
    EXPECT_THAT(TestSupport::textThrownBy<UtilException>([&] { Properties{directory_.path()}; }),
                StartsWith("Unable to open file: "));
}
