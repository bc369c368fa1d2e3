#include "TestSupport.h"

#include "log/LoggerFactory.h"
#include "log/config/LoggerKeys.h"
#include "zav-util/Properties.h"

#include <gmock/gmock.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using testing::ElementsAre;

TEST(LoggerKeys, ParentsComeBeforeTheirChildrenAndTheRootFirst) {
    std::vector<std::string> order;
    for (const LoggerKey& key :
         orderLoggerKeys({"appender.a", "logger", "logger.", "logger.a.b.level", "logger.a.level",
                          "logger.root.level", "logger.root.x.level", "logger.x", "loggers.a.level"})) {
        order.push_back(key.loggerName);
    }
    EXPECT_THAT(order, ElementsAre("root", "root.x", "a", "a.b"));
}

TEST(LoggerFactory, AppliesKeysAndReportsBadValues) {
    Util::Properties properties;
    properties["logger.a.b.level"] = "INFO";
    properties["logger.a.level"] = "ERROR";
    properties["logger.a.expiration"] = "5";
    properties["logger.b.expiration"] = "5x";
    properties["logger.b.level"] = "Verbose";
    properties["logger.b.colour"] = "red";
    properties["logger.root.level"] = "DEBUG";
    const TestSupport::StreamCapture errors(std::cerr);
    LoggerFactory::initLoggers(properties);
    EXPECT_EQ(LoggerFactory::getRootLogger().getLevel(), Level::DEBUG);
    EXPECT_EQ(LoggerFactory::getLogger("a").getLevel(), Level::ERROR);
    EXPECT_EQ(LoggerFactory::getLogger("a.b").getLevel(), Level::INFO);
    EXPECT_EQ(LoggerFactory::getLogger("a.b").getExpirationTime(), Time(300, SEC));
    EXPECT_EQ(LoggerFactory::getLogger("b").getLevel(), Level::DEBUG);
    const std::string level =
        "Exception parsing property logger.b.level: There is no 'Verbose' LogLevel defined.\n";
    const std::string expiration =
        "Exception parsing property logger.b.expiration: Can't convert 5x to integer\n";
    EXPECT_THAT(errors.text(), testing::AnyOf(level + expiration, expiration + level));
}
