#include "TestSupport.h"

#include "log/LogException.h"
#include "log/LogManager.h"
#include "log/filters/FilterLogLevel.h"
#include "log/filters/FilterLogLevelDynamic.h"
#include "log/filters/FilterLogger.h"
#include "log/filters/FilterMessageType.h"
#include "zav-util/Properties.h"

#include <gmock/gmock.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using TestSupport::makeMessage;
using Util::Properties;

namespace {

Properties propertiesOf(const std::string& suffix, const std::string& value) {
    Properties properties;
    properties["appender.x." + suffix] = value;
    return properties;
}

template <typename Filter>
std::string rejectionOf(const Properties& properties) {
    return TestSupport::textThrownBy<LogException>([&] { Filter("x", properties); });
}

} // namespace

TEST(FilterLogLevel, PassesItsLevelAndMoreSevereOnes) {
    FilterLogLevel filter("x", propertiesOf("level", "INFO"));
    EXPECT_TRUE(filter.accept(makeMessage("", Level::AUDIT)));
    EXPECT_TRUE(filter.accept(makeMessage("", Level::INFO)));
    EXPECT_FALSE(filter.accept(makeMessage("", Level::DEBUG)));
}

TEST(FilterLogger, PassesTextualPrefixesOfTheLoggerName) {
    FilterLogger filter("x", propertiesOf("filters", " net  db.pool "));
    for (const char* name : {"net", "net.client", "network", "db.pool.main"}) {
        EXPECT_TRUE(filter.accept(makeMessage("", Level::INFO, name))) << name;
    }
    for (const char* name : {"app.net", "db", "Net", "root", "ne"}) {
        EXPECT_FALSE(filter.accept(makeMessage("", Level::INFO, name))) << name;
    }
    FilterLogger tabbed("x", propertiesOf("filters", "net\tdb"));
    EXPECT_FALSE(tabbed.accept(makeMessage("", Level::INFO, "net")));
    FilterLogger blank("x", propertiesOf("filters", " "));
    EXPECT_FALSE(blank.accept(makeMessage("", Level::INFO, "net")));
}

TEST(FilterMessageType, PassesOneTypeOnly) {
    FilterMessageType filter("x", propertiesOf("message_type", "CFG"));
    EXPECT_TRUE(filter.accept(makeMessage("", Level::AUDIT, "net", Time(), CFG)));
    EXPECT_FALSE(filter.accept(makeMessage("", Level::AUDIT, "net", Time(), LOG)));
}

TEST(Filters, SayWhatIsWrongWithTheirSettings) {
    const Properties none;
    EXPECT_EQ(rejectionOf<FilterLogLevel>(none), "Properties does not specify level for appender 'x'");
    EXPECT_EQ(rejectionOf<FilterMessageType>(none),
              "Properties does not specify message_type for appender 'x'");
    EXPECT_EQ(rejectionOf<FilterLogger>(none), "Properties does not specify filters for appender 'x'");
    EXPECT_EQ(rejectionOf<FilterLogLevelDynamic>(none), "Properties do not specify level for appender 'x'");
    EXPECT_EQ(rejectionOf<FilterLogLevel>(propertiesOf("level", "info")),
              "There is no 'info' LogLevel defined.");
    EXPECT_EQ(rejectionOf<FilterMessageType>(propertiesOf("message_type", "cfg")),
              "There is no 'cfg' MessageType defined.");
}

namespace {

/// A dynamic filter at `INFO`, and messages that come a while after a command.
class DynamicFilter : public testing::Test {
protected:
    static Properties settings(const std::string& expiration) {
        Properties properties = propertiesOf("level", "INFO");
        properties["appender.x.expiration"] = expiration;
        return properties;
    }

    /// Whether a `DEBUG` message passes that comes `delay` after a command lowered the filter to `DEBUG`. The
    /// filter's clock may be up to `slack` behind the test's.
    static bool passesAfter(const std::string& expiration, Time delay) {
        FilterLogLevelDynamic filter("x", settings(expiration));
        filter.onCommand("DEBUG");
        return filter.accept(makeMessage("", Level::DEBUG, "net", Time::now() + delay));
    }

    static constexpr Time slack{5, SEC};
    FilterLogLevelDynamic filter_{"x", settings("10")};
};

constexpr Time DynamicFilter::slack;

} // namespace

TEST_F(DynamicFilter, IsLoweredByCommandsAndNeverRaised) {
    const LogMessage debug = makeMessage("", Level::DEBUG);
    EXPECT_FALSE(filter_.accept(debug));
    filter_.onCommand("ERROR");
    EXPECT_TRUE(filter_.accept(makeMessage("", Level::INFO)));
    filter_.onCommand("TRACE");
    filter_.onCommand("DEBUG");
    EXPECT_TRUE(filter_.accept(makeMessage("", Level::TRACE)));
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([&] { filter_.onCommand("debug"); }),
              "There is no 'debug' LogLevel defined.");
    EXPECT_TRUE(filter_.accept(makeMessage("", Level::TRACE)));
}

TEST_F(DynamicFilter, ReturnsToItsLevelWithTheFirstMessageAfterThePeriod) {
    const Time begin = Time::now();
    filter_.onCommand("DEBUG");
    EXPECT_TRUE(filter_.accept(makeMessage("", Level::DEBUG, "net", begin + Time(10, MIN))));
    EXPECT_FALSE(filter_.accept(makeMessage("", Level::DEBUG, "net", Time::now() + Time(10, MIN) + slack)));
    EXPECT_FALSE(filter_.accept(makeMessage("", Level::DEBUG, "net", begin)));
    EXPECT_TRUE(filter_.accept(makeMessage("", Level::INFO, "net", begin)));
}

TEST_F(DynamicFilter, CountsItsPeriodInTheConfiguredUnit) {
    const std::pair<std::string, Time> periods[] = {
        {"20000 msec", Time(20, SEC)}, {"20 sec 30", Time(20, SEC)}, {"2", Time(2, MIN)},
        {"2 min", Time(2, MIN)},       {"2 weeks", Time(2, MIN)},    {" 2  hour ", Time(2, HOUR)},
        {"2 day", Time(2, DAY)}};
    for (const auto& period : periods) {
        EXPECT_TRUE(
            passesAfter(period.first, Time(period.second.microseconds() - slack.microseconds(), USEC)))
            << period.first;
        EXPECT_FALSE(passesAfter(period.first, period.second + slack)) << period.first;
    }
    EXPECT_TRUE(passesAfter("0", Time(1000, DAY)));
}

TEST_F(DynamicFilter, RejectsABadCountUnderTheAppendersName) {
    const std::string beginning = "Wrong value for the x.expiration property: Can't convert ";
    EXPECT_EQ(rejectionOf<FilterLogLevelDynamic>(settings("x min")), beginning + "x to integer");
    EXPECT_EQ(rejectionOf<FilterLogLevelDynamic>(settings("  ")), beginning + "   to integer");
}
