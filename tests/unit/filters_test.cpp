#include "TestClock.h"
#include "TestSupport.h"

#include "log/LogException.h"
#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"
#include "log/filters/MessageFilters.h"

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

/// The only filter created for a setting.
boost::shared_ptr<MessageFilter> filterOf(const Properties& properties) {
    const auto filters = makeFilters(AppenderValues("x", READ_BY_STDOUT_APPENDER, properties));
    EXPECT_EQ(filters.size(), 1U);
    return filters.front();
}

} // namespace

TEST(FilterLogLevel, PassesItsLevelAndMoreSevereOnes) {
    const auto filter = filterOf(propertiesOf("level", "INFO"));
    EXPECT_TRUE(filter->accept(makeMessage("", Level::AUDIT)));
    EXPECT_TRUE(filter->accept(makeMessage("", Level::INFO)));
    EXPECT_FALSE(filter->accept(makeMessage("", Level::DEBUG)));
}

TEST(FilterLogger, PassesTextualPrefixesOfTheLoggerName) {
    const auto filter = filterOf(propertiesOf("filters", " net  db.pool "));
    for (const char* name : {"net", "net.client", "network", "db.pool.main"}) {
        EXPECT_TRUE(filter->accept(makeMessage("", Level::INFO, name))) << name;
    }
    for (const char* name : {"app.net", "db", "Net", "root", "ne"}) {
        EXPECT_FALSE(filter->accept(makeMessage("", Level::INFO, name))) << name;
    }
    for (const char* list : {"net\tdb", " "}) {
        EXPECT_FALSE(filterOf(propertiesOf("filters", list))->accept(makeMessage("", Level::INFO, "net")));
    }
}

namespace {

/// Dynamic filters at `INFO`.
class DynamicFilter : public testing::Test {
protected:
    static boost::shared_ptr<FilterLogLevelDynamic> make(const std::string& expiration) {
        Properties properties = propertiesOf("level", "INFO");
        properties["appender.x.expiration"] = expiration;
        return boost::dynamic_pointer_cast<FilterLogLevelDynamic>(filterOf(properties));
    }

    /// Whether a message passes that is logged `later` after `begin_`.
    bool passes(FilterLogLevelDynamic& filter, Level::LogLevel level, Time later = Time()) const {
        return filter.accept(makeMessage("", level, "net", begin_ + later));
    }

    const Time begin_ = Time::now();
    const boost::shared_ptr<FilterLogLevelDynamic> held_ = make("10");
    FilterLogLevelDynamic& filter_ = *held_;
};

} // namespace

TEST_F(DynamicFilter, IsLoweredByCommandsAndNeverRaised) {
    EXPECT_FALSE(passes(filter_, Level::DEBUG));
    filter_.onCommand("ERROR");
    EXPECT_TRUE(passes(filter_, Level::INFO));
    filter_.onCommand("TRACE");
    filter_.onCommand("DEBUG");
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([&] { filter_.onCommand("debug"); }),
              "There is no 'debug' LogLevel defined.");
    EXPECT_TRUE(passes(filter_, Level::TRACE));
}

TEST_F(DynamicFilter, CountsItsPeriodFromTheLastCommandThatIsNotAboveIt) {
    filter_.onCommand("DEBUG");
    TestSupport::setClock(begin_ + Time(5, MIN));
    filter_.onCommand("DEBUG");
    TestSupport::setClock(begin_ + Time(9, MIN));
    filter_.onCommand("INFO");
    EXPECT_TRUE(passes(filter_, Level::DEBUG, Time(15, MIN)));
    EXPECT_FALSE(passes(filter_, Level::DEBUG, Time(15, MIN) + Time(1, USEC)));
    EXPECT_FALSE(passes(filter_, Level::DEBUG)); // permanently back at its own level
    EXPECT_TRUE(passes(filter_, Level::INFO));
}

TEST_F(DynamicFilter, CountsItsPeriodInTheConfiguredUnit) {
    const std::pair<std::string, Time> periods[] = {{"20 msec", Time(20, MSEC)}, {"20 sec 30", Time(20, SEC)},
                                                    {"2", Time(2, MIN)},         {"2 min", Time(2, MIN)},
                                                    {"2 weeks", Time(2, MIN)},   {" 2  hour ", Time(2, HOUR)},
                                                    {"2 day", Time(2, DAY)}};
    for (const auto& [text, period] : periods) {
        const auto filter = make(text);
        filter->onCommand("DEBUG");
        EXPECT_TRUE(passes(*filter, Level::DEBUG, period)) << text;
        EXPECT_FALSE(passes(*filter, Level::DEBUG, period + Time(1, USEC))) << text;
    }
    const auto lasting = make("0");
    lasting->onCommand("DEBUG");
    EXPECT_TRUE(passes(*lasting, Level::DEBUG, Time(1000, DAY)));
}

TEST_F(DynamicFilter, RejectsAPeriodWithoutANumber) {
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([] { make("  "); }),
              "Wrong value for the x.expiration property: Can't convert    to integer");
}
