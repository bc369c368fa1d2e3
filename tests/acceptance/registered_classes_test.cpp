#include "AcceptanceSupport.h"

#include "log/AppenderOptions.h"
#include "log/ConfigurationMessage.h"
#include "log/LogException.h"
#include "log/LogLine.h"

#include <memory>
#include <optional>
#include <stdexcept>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

/// What objects of the class below have written, in any thread, and in which threads.
struct Written {
    std::vector<std::string> lines;
    std::thread::id thread;
};

/// Writes its name and its key "topic" before each line.
class TopicAppender : public Appender {
public:
    TopicAppender(const AppenderOptions& options, Written& written)
        : Appender(options), options_(options), written_(written) {}

private:
    void doOutput(const LogMessage& message) override {
        written_.lines.push_back(options_.name + '/' + options_.value("topic", "none") + ' ' +
                                 linesIn(options_.formatLine(message)).front());
        written_.thread = std::this_thread::get_id();
    }

    const AppenderOptions options_;
    Written& written_;
};

class RegisteredClass : public Application {
protected:
    static constexpr char TOPIC[] = "TopicAppender";

    void registerTopics() {
        LogManager::registerAppenderClass(TOPIC, [this](const AppenderOptions& options) {
            kept_ = options;
            return std::make_unique<TopicAppender>(options, written_);
        });
    }

    Written written_;
    std::optional<AppenderOptions> kept_;
};

} // namespace

TEST_F(RegisteredClass, MakesAppendersByTheirKeys) {
    registerTopics();
    ASSERT_TRUE(init("logger.root.level = TRACE\n"
                     "appender.a = TopicAppender\n"
                     "appender.a.topic = orders\n"
                     "appender.a.filters = net\n"
                     "appender.a.level = INFO\n"
                     "appender.a.expiration = 1 hour\n"
                     "appender.a.escape = true\n"
                     "appender.ab = TopicAppender\n"
                     "appender.ab.message_type = CFG\n"));
    Logger& net = LoggerFactory::getLogger("net");
    net.info("1\n", 7, "a.cpp");
    net.debug("unseen", 0, "");
    LoggerFactory::getLogger("db").error("unseen", 0, "");
    LogManager::command("DynamicLogLevelFilterSoft", "DEBUG");
    net.debug("2", 0, "");
    net.config(ConfigurationMessage("3\n"));
    EXPECT_THAT(written_.lines, ElementsAre("a/orders net a.cpp:7 INFO 1\\n", "a/orders net DEBUG 2",
                                            "a/orders net 3\\n", "ab/none net 3"));
    EXPECT_EQ(written_.thread, std::this_thread::get_id());
    const std::vector<AppenderStatus> statuses = LogManager::appenders();
    ASSERT_THAT(statuses, SizeIs(2));
    EXPECT_EQ(statuses[0].className, TOPIC);
    EXPECT_EQ(statuses[0].level, Level::DEBUG);

    LogManager::finish();
    net.info("unseen", 0, "");
    EXPECT_THAT(written_.lines, SizeIs(4));
    const LogMessage message = makeMessage("later");
    EXPECT_EQ(kept_->formatLine(message), formatLogLine(message)); // a copy outlives everything
    EXPECT_EQ(kept_->value("message_type"), "CFG");
    EXPECT_EQ(kept_->value("topic"), "");
}

TEST_F(RegisteredClass, IsServedByTheConsumerIfAsynchronous) {
    registerTopics();
    ASSERT_TRUE(init("appender.a = TopicAppender\n"
                     "appender.a.asynchronous = true\n"
                     "zav.log.AsynchronousDispatcher.waitingPeriod = 3600\n"));
    LoggerFactory::getLogger("net").error("1", 0, "");
    EXPECT_TRUE(LogManager::flush());
    EXPECT_THAT(written_.lines, ElementsAre("a/none net ERROR 1"));
    EXPECT_NE(written_.thread, std::this_thread::get_id());
    EXPECT_FALSE(kept_->synchronous);
}

TEST_F(RegisteredClass, IsRefusedLikeABadSetting) {
    const auto add = [](const std::string& name) {
        LogManager::registerAppenderClass(name, [](const AppenderOptions&) { return nullptr; });
    };
    ASSERT_TRUE(init("appender.x = StdoutAppender\n"));
    registerTopics(); // takes effect with the next init
    for (const char* const name : {"TopicAppender", "StdoutAppender", "FileAppender", "SimpleFileAppender"}) {
        EXPECT_EQ(textThrownBy<LogException>([&] { add(name); }),
                  std::string("Appender class ") + name + " has already been registered.");
    }
    LogManager::finish();
    add("NullAppender");
    LogManager::registerAppenderClass("AngryAppender", [](const AppenderOptions& options) {
        if (options.value("mood") == "low") {
            throw std::length_error("too low");
        }
        throw LogException(options.name + " is angry");
        return nullptr;
    });
    const auto refusalOf = [this](const std::string& line) {
        return textThrownBy<std::exception>([&] { init("appender.a = TopicAppender\n" + line); });
    };
    EXPECT_EQ(refusalOf("appender.b = NullAppender\n"), "Appender class NullAppender made no appender.");
    EXPECT_EQ(refusalOf("appender.b = AngryAppender\n"), "b is angry");
    EXPECT_EQ(refusalOf("appender.b = AngryAppender\nappender.b.mood = low\n"), "too low");
    EXPECT_EQ(refusalOf("appender.b = TopicAppender\nappender.b.level = info\n"),
              "There is no 'info' LogLevel defined.");
    EXPECT_EQ(refusalOf("appender..a = TopicAppender\n"), "Appender a has already been registered.");
    EXPECT_THAT(LogManager::appenders(), IsEmpty());
    ASSERT_TRUE(init("appender.a = TopicAppender\n"));
    LoggerFactory::getLogger("net").error("once", 0, "");
    EXPECT_THAT(written_.lines, ElementsAre("a/none net ERROR once"));
}
