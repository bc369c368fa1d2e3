#include "TestSupport.h"

#include "log/LogException.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "log/appenders/AppenderRegistry.h"
#include "log/appenders/FileAppenderBuilder.h"
#include "log/appenders/StdoutAppenderBuilder.h"
#include "zav-util/Properties.h"
#include "zav-util/UtilException.h"

#include <gmock/gmock.h>

using namespace ZAV;
using namespace ZAV::Log;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Util::Properties;

namespace {

/// Keeps what reaches standard output while it lives, and takes the library down.
class Configured : public testing::Test {
protected:
    ~Configured() override { LogManager::finish(); }

    std::string initFailure() {
        return TestSupport::textThrownBy<LogException>([this] { LogManager::init(properties_); });
    }

    Properties properties_;
    TestSupport::StreamCapture output_{std::cout};
};

} // namespace

TEST_F(Configured, AppenderWritesWhatItsFiltersLetThrough) {
    properties_["logger.root.level"] = "DEBUG";
    properties_["appender.console"] = "StdoutAppender";
    properties_["appender.console.filters"] = "net";
    properties_["appender.console.level"] = "INFO";
    properties_["appender.console.message_type"] = "LOG";
    properties_["appender.other.level"] = "DEBUG"; // declares nothing
    properties_["appender.x.y"] = "StdoutAppender";
    EXPECT_TRUE(LogManager::init(properties_));
    EXPECT_FALSE(LogManager::init(Properties()));
    LoggerFactory::getLogger("net").info("seen", 0, "");
    LoggerFactory::getLogger("net").debug("level", 0, "");
    LoggerFactory::getLogger("db").info("logger", 0, "");
    EXPECT_THAT(output_.text(), HasSubstr(" net INFO seen\n"));
    EXPECT_EQ(output_.text().find('\n'), output_.text().size() - 1);
    LogManager::finish();
    LoggerFactory::getLogger("net").info("after finish", 0, "");
    EXPECT_THAT(output_.text(), Not(HasSubstr("after finish")));
    EXPECT_TRUE(LogManager::init(properties_));
}

TEST_F(Configured, BadDeclarationsAreRefusedAndALaterInitSucceeds) {
    TestSupport::RecordingListener listener;
    LogManager::registerCommandListener("X", &listener);
    properties_["appender.x"] = "Stdout";
    EXPECT_EQ(initFailure(), "No factory registered for appenderName = x, appenderClass = Stdout");
    LogManager::command("X", "a");
    EXPECT_TRUE(listener.arguments.empty());
    properties_["appender.x"] = "StdoutAppender";
    properties_["appender..x"] = "FileAppender";
    EXPECT_EQ(initFailure(), "Appender x has already been registered.");
    properties_.erase("appender.x");
    EXPECT_EQ(initFailure(), "No factory registered for appenderName = x, appenderClass = ");
    properties_.erase("appender..x");
    EXPECT_TRUE(LogManager::init(properties_));
}

TEST_F(Configured, ARejectedAppendersDynamicFilterIsOffTheBus) {
    AppenderRegistry& registry = AppenderRegistry::instance();
    properties_["appender.x.level"] = "INFO";
    properties_["appender.x.expiration"] = "1";
    StdoutAppenderBuilder first("x");
    registry.registerAppender(first.configure(properties_).build());
    Appender* duplicate = nullptr;
    {
        StdoutAppenderBuilder second("x");
        duplicate = second.configure(properties_).build();
    }
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([&] { registry.registerAppender(duplicate); }),
              "Appender x has already been registered.");
    // A filter that is gone would be called here, which the address sanitizer sees.
    LogManager::command("DynamicLogLevelFilterSoft", "DEBUG");
    LoggerFactory::getRootLogger().error("once", 0, "");
    EXPECT_THAT(output_.text(), HasSubstr(" root ERROR once\n"));
}

TEST_F(Configured, ACommandLowersEveryDynamicFilter) {
    for (const std::string name : {"a", "b"}) {
        properties_["appender." + name] = "StdoutAppender";
        properties_["appender." + name + ".level"] = "WARNING";
        properties_["appender." + name + ".expiration"] = "1 hour";
    }
    LogManager::init(properties_);
    Logger& logger = LoggerFactory::getLogger("net");
    logger.setLevel(Level::DEBUG, false);
    logger.debug("unseen", 0, "");
    EXPECT_EQ(output_.text(), "");
    logger.setLevel(Level::DEBUG, true);
    logger.debug("seen", 0, "");
    const std::string text = output_.text();
    EXPECT_NE(text.find("seen"), text.rfind("seen"));
}

TEST_F(Configured, FileNamesAreChecked) {
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([] { LogManager::init(""); }),
              "File name parameter is empty.");
    EXPECT_TRUE(LogManager::init(properties_));
    EXPECT_THAT(TestSupport::textThrownBy<Util::UtilException>([] { LogManager::init("no such file"); }),
                StartsWith("Unable to open file: no such file from "));
}
