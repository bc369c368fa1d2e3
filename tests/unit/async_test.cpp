#include "TestSupport.h"

#include "log/LogLine.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/async/DispatcherSettings.h"
#include "log/async/MessageQueue.h"
#include "zav-util/Properties.h"

#include <future>
#include <gmock/gmock.h>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Util::Properties;

namespace {

const std::string PREFIX = "zav.log.AsynchronousDispatcher.";

Properties tuning(const std::string& maxQueueSize, const std::string& waitingPeriod) {
    Properties properties;
    properties[PREFIX + "maxQueueSize"] = maxQueueSize;
    properties[PREFIX + "waitingPeriod"] = waitingPeriod;
    return properties;
}

void append(MessageQueue& queue, const std::string& text) {
    queue.append(TestSupport::makeMessage(text));
}

std::vector<std::string> textsOf(const MessageBatch& batch) {
    std::vector<std::string> texts;
    for (MessageBatch::Reader messages(batch); messages.hasNext();) {
        texts.push_back(messages.next().getText());
    }
    return texts;
}

} // namespace

TEST(DispatcherSettings, KeepTheirValuesWithoutAKeyAndForABadOne) {
    DispatcherSettings settings;
    settings.read(Properties());
    EXPECT_EQ(settings.maxQueueSize, 1024U);
    EXPECT_EQ(settings.waitingPeriod, Time(2, SEC));
    EXPECT_EQ(settings.priority, DEFAULT_PRIORITY_MARK);
    const TestSupport::StreamCapture errors(std::cerr);
    settings.read(tuning("abc", "7"));
    EXPECT_EQ(errors.text(), "AsynchronousDispatcher::configure failure for option " + PREFIX +
                                 "maxQueueSize. Exception: Can't convert abc to integer\n");
    EXPECT_EQ(settings.maxQueueSize, 1024U);
    EXPECT_EQ(settings.waitingPeriod, Time(7, SEC));
}

TEST(DispatcherSettings, MapThePriorityScaleToThreePriorities) {
    const std::pair<const char*, int> priorities[] = {
        {"25", 0}, {"24", -2}, {"-3", -2}, {"26", 2}, {"1000", 2}};
    for (const auto& priority : priorities) {
        Properties properties;
        properties[PREFIX + "priority"] = priority.first;
        DispatcherSettings settings;
        settings.read(properties);
        EXPECT_EQ(settings.priority, priority.second) << priority.first;
    }
}

TEST(MessageQueue, PushesTheOldestOutAtItsLimit) {
    MessageQueue queue;
    queue.configure(tuning("4", "3600"));
    const TestSupport::StreamCapture errors(std::cerr);
    for (const char* text : {"1", "2", "3"}) {
        append(queue, text);
    }
    EXPECT_EQ(errors.text(), "");
    append(queue, "4");
    EXPECT_THAT(errors.text(), StartsWith("Message queue size reached. Discarding oldest log message: "));
    EXPECT_THAT(errors.text(), EndsWith(" net.tcp INFO 1\n"));
    EXPECT_THAT(textsOf(queue.close()), ElementsAre("2", "3", "4"));
    append(queue, "too late");
    EXPECT_THAT(errors.text(), HasSubstr("Discarding oldest log message: "));
    EXPECT_THAT(errors.text(), HasSubstr(" too late\n"));
}

TEST(MessageQueue, WithALimitOfOneHoldsNothingAndWithANegativeOneEverything) {
    const TestSupport::StreamCapture errors(std::cerr);
    MessageQueue none;
    none.configure(tuning("1", "3600"));
    append(none, "a");
    EXPECT_THAT(errors.text(), HasSubstr(" INFO a\n"));
    EXPECT_EQ(none.close().size(), 0U);
    MessageQueue all;
    all.configure(tuning("-1", "3600"));
    for (int i = 0; i < 3000; ++i) {
        append(all, "b");
    }
    EXPECT_EQ(all.close().size(), 3000U);
}

TEST(MessageQueue, WakesTheConsumerWhenItIsHalfFull) {
    MessageQueue queue;
    queue.configure(tuning("4", "3600"));
    const std::atomic<bool> stopped{false};
    auto batch = std::async(std::launch::async, [&] {
        queue.wait(stopped);
        return queue.takeBatch();
    });
    // A notification is lost on a consumer that does not wait yet, so the queue is filled again until one is
    // not; if none ever wakes it, the test hangs.
    do {
        queue.takeBatch();
        append(queue, "a");
        append(queue, "b");
    } while (batch.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready);
    EXPECT_THAT(textsOf(batch.get()), ElementsAre("a", "b"));
}

namespace {

/// An appender that holds the consumer inside a write until the test lets it go on.
class BlockingAppender : public Appender {
public:
    BlockingAppender() : Appender("blocking", false) {}

    std::promise<void> entered;
    std::promise<void> released;
    std::vector<std::string> texts;

protected:
    void doOutput(const LogMessage& message) override {
        texts.push_back(message.getText());
        if (texts.size() == 1) {
            entered.set_value();
            released.get_future().wait();
        }
    }
};

void enqueue(const std::string& text) {
    AsynchronousDispatcher::instance().enqueue(TestSupport::makeMessage(text), true);
}

} // namespace

TEST(AsynchronousDispatcher, KeepsMessagesForTheNextConsumer) {
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
    dispatcher.configure(tuning("1024", "3600"));
    enqueue("a");
    TestSupport::RecordingAppender appender("x", false);
    dispatcher.registerAsynchronousAppender(&appender);
    dispatcher.stop();
    EXPECT_THAT(appender.texts, ElementsAre("a"));
    dispatcher.unregisterAsynchronousAppender(&appender);
}

TEST(AsynchronousDispatcher, WritesWhatWasQueuedBeforeTheStop) {
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
    dispatcher.configure(tuning("1024", "3600"));
    TestSupport::RecordingAppender appender("x", false);
    dispatcher.registerAsynchronousAppender(&appender);
    enqueue("a");
    enqueue("b");
    dispatcher.stop();
    EXPECT_THAT(appender.texts, ElementsAre("a", "b"));
    dispatcher.unregisterAsynchronousAppender(&appender);
}

TEST(AsynchronousDispatcher, DeliversPromptlyWithoutAWaitingPeriod) {
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
    dispatcher.configure(tuning("1024", "-5"));
    BlockingAppender appender;
    appender.released.set_value();
    dispatcher.registerAsynchronousAppender(&appender);
    enqueue("a");
    appender.entered.get_future().wait(); // a hang here is the failure
    dispatcher.unregisterAsynchronousAppender(&appender);
    EXPECT_THAT(appender.texts, ElementsAre("a"));
}

TEST(AsynchronousDispatcher, LeavesAWaitThatIsLongerThanThoseToCome) {
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
    dispatcher.configure(tuning("1024", "0")); // lets the consumer wait without a limit
    BlockingAppender appender;
    appender.released.set_value();
    dispatcher.registerAsynchronousAppender(&appender);
    dispatcher.configure(tuning("1024", "1"));
    enqueue("a");
    appender.entered.get_future().wait(); // a hang here is the failure
    dispatcher.unregisterAsynchronousAppender(&appender);
}
