#include "TestSupport.h"

#include "log/LogException.h"
#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/DispatcherSettings.h"
#include "log/config/LoggerKeys.h"
#include "log/config/ValueReaders.h"

#include <cctype>
#include <iostream>
#include <utility>

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

namespace {

/// The whole key, with `L` for the name of the logger and `A` for that of the appender.
std::string genericKey(const ConfigurationKey& key) {
    const std::string name = key.name;
    if (key.section == KeySection::LOGGER) {
        return std::string(LOGGER_KEY_PREFIX) + "L." + name;
    }
    if (key.section == KeySection::DISPATCHER) {
        return dispatcherKey(name);
    }
    return name.empty() ? appenderKey("A") : appenderKey("A", name);
}

std::string describeReaders(const ConfigurationKey& key) {
    switch (key.readers) {
    case READ_BY_LOGGERS:
        return "the loggers";
    case READ_BY_DISPATCHER:
        return "the dispatcher";
    case READ_BY_APPENDERS:
        return "all appenders";
    default:
        break;
    }
    std::string readers;
    for (const char* const name : {AppenderClass::STDOUT, AppenderClass::FILE_SERIES,
                                   AppenderClass::SINGLE_FILE, AppenderClass::ROLLED_FILE}) {
        if ((key.readers & readerOfClass(name)) != 0) {
            readers += (readers.empty() ? "`" : ", `") + std::string(name) + "`";
        }
    }
    return readers;
}

/// Numbers are shown as they are, other values as code.
std::string describeDefault(const ConfigurationKey& key) {
    const std::string text = key.byDefault.text;
    const bool isWord = key.byDefault.isValue && std::isdigit(static_cast<unsigned char>(text.front())) == 0;
    return isWord ? "`" + text + "`" : text;
}

std::string tableOfKeys() {
    std::string table = "| Key | Read by | Value | Default | Effect |\n|---|---|---|---|---|\n";
    for (const ConfigurationKey& key : configurationKeys()) {
        const std::string byDefault = describeDefault(key);
        table += "| `" + genericKey(key) + "` | " + describeReaders(key) + " | " + key.values + " | " +
                 byDefault + (byDefault.empty() ? "| " : " | ") + key.meaning + " |\n";
    }
    return table;
}

} // namespace

TEST(ConfigurationKeys, StandInTheDocumentationAsInTheTable) {
    const std::string page = TestSupport::readFile(ZAV_LOG_DOCS_DIR "/configuration.md");
    const std::string::size_type begin = page.find("| Key |");
    ASSERT_NE(begin, std::string::npos);
    EXPECT_EQ(page.substr(begin, page.find("\n\n", begin) + 1 - begin), tableOfKeys());
}

TEST(AppenderValues, AreReadFromTheKeysOfTheClassAndNoOthers) {
    Util::Properties properties;
    properties["appender.x.recovery"] = "5 sec";
    properties["appender.x.fileMaxSize"] = "5";
    EXPECT_EQ(AppenderValues("x", READ_BY_FILE_APPENDER, properties).recovery, Time(5, Util::TimeUtils::SEC));
    properties["appender.x.recovery"] = "x";
    properties["appender.y.level"] = "x";
    const AppenderValues values("x", READ_BY_SIMPLE_FILE_APPENDER, properties);
    EXPECT_EQ(values.recovery, Time());
    EXPECT_EQ(values.fileMaxSize, std::uint64_t{10} * 1024 * 1024);
    EXPECT_EQ(TestSupport::textThrownBy<LogException>(
                  [&] { AppenderValues("x", READ_BY_FILE_APPENDER, properties); }),
              "Wrong value for the x.recovery property: Can't convert x to integer");
}

TEST(ValueReaders, TellWhatOfANumberCounts) {
    const auto partly = readLeadingUnsigned(" 5x");
    EXPECT_EQ(partly.value, 5U);
    EXPECT_TRUE(partly.isNumber);
    EXPECT_FALSE(partly.isWhole);
    EXPECT_FALSE(readLeadingSigned("x5").isNumber);
    EXPECT_FALSE(readLeadingSigned("").isNumber);
    const auto cut = readLeadingSigned("-99999999999");
    EXPECT_EQ(cut.value, std::numeric_limits<std::int32_t>::min());
    EXPECT_TRUE(cut.isNumber && cut.isWhole && cut.isCut);
    const auto zero = readLeadingSigned("0");
    EXPECT_TRUE(zero.isNumber && zero.isWhole && !zero.isCut);
}

TEST(DispatcherSettings, KeepTheirValuesWithoutAKeyAndForABadOne) {
    const auto keys = [](const char* maxQueueSize, const char* waitingPeriod) {
        Util::Properties properties;
        properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = maxQueueSize;
        properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = waitingPeriod;
        return properties;
    };
    DispatcherSettings settings;
    const TestSupport::StreamCapture errors(std::cerr);
    settings.read(keys("abc", "7"));
    EXPECT_THAT(errors.text(), EndsWith("maxQueueSize. Exception: Can't convert abc to integer\n"));
    EXPECT_EQ(settings.maxQueueSize, 1024U);
    settings.read(Util::Properties());
    EXPECT_EQ(settings.waitingPeriod, Time(7, Util::TimeUtils::SEC));
    EXPECT_EQ(DispatcherSettings().waitingPeriod, Time(2, Util::TimeUtils::SEC));
    settings.read(keys("1", "-5"));
    EXPECT_EQ(settings.waitingPeriod, Time());
}

TEST(DispatcherSettings, MapThePriorityScaleToThreePriorities) {
    const std::pair<const char*, int> priorities[] = {
        {"25", 0}, {"24", -2}, {"-3", -2}, {"26", 2}, {"1000", 2}};
    for (const auto& priority : priorities) {
        Util::Properties properties;
        properties["zav.log.AsynchronousDispatcher.priority"] = priority.first;
        DispatcherSettings settings;
        settings.read(properties);
        EXPECT_EQ(settings.priority, priority.second) << priority.first;
    }
}
