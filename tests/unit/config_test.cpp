#include "TestSupport.h"

#include "log/config/LoggerKeys.h"

using namespace ZAV;
using namespace ZAV::Log;
using namespace testing;
using Util::TimeUtils::Time;

TEST(LoggerKeys, ParentsComeBeforeTheirChildrenAndTheRootFirst) {
    std::vector<std::string> order;
    for (const LoggerKey& key : orderLoggerKeys({"appender.a", "logger", "logger.", "logger.a.b.level",
                                                 "logger.a.level", "logger.b.level", "logger.root.level",
                                                 "logger.root.x.level", "logger.x", "loggers.a.level"})) {
        order.push_back(key.loggerName);
    }
    EXPECT_THAT(order, ElementsAre("root", "root.x", "a", "a.b", "b"));
}

TEST(LoggerFactory, AppliesKeysAndTellsTheDynamicFilters) {
    TestSupport::RecordingListener filter;
    LogManager::registerCommandListener("DynamicLogLevelFilterSoft", &filter);
    Util::Properties properties;
    properties["logger.a.b.level"] = "INFO";
    properties["logger.a.level"] = "ERROR";
    properties["logger.a.expiration"] = "5";
    properties["logger.a.colour"] = "red";
    properties["logger.root.level"] = "DEBUG";
    LoggerFactory::initLoggers(properties);
    EXPECT_EQ(LoggerFactory::getRootLogger().getLevel(), Level::DEBUG);
    EXPECT_EQ(LoggerFactory::getLogger("a").getLevel(), Level::ERROR);
    EXPECT_EQ(LoggerFactory::getLogger("a.b").getLevel(), Level::INFO);
    EXPECT_EQ(LoggerFactory::getLogger("a.b").getExpirationTime(), Time(300, Util::TimeUtils::SEC));
    EXPECT_THAT(filter.arguments, ElementsAre("DEBUG", "ERROR", "INFO"));
}
