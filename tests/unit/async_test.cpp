#include "TestSupport.h"

#include "log/async/AsynchronousAppenders.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/async/DispatcherSettings.h"
#include "log/async/MessageBatch.h"
#include "log/async/MessageQueue.h"
#include "log/reentrancy/LibraryCall.h"

#include <future>
#include <iostream>
#include <limits>
#include <sstream>
#include <tuple>
#include <utility>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using namespace testing;
using TestSupport::makeMessage;
using Util::Properties;

namespace {

const std::string PREFIX = "zav.log.AsynchronousDispatcher.";

Properties tuning(const std::string& maxQueueSize, const std::string& waitingPeriod) {
    Properties properties;
    properties[PREFIX + "maxQueueSize"] = maxQueueSize;
    properties[PREFIX + "waitingPeriod"] = waitingPeriod;
    return properties;
}

MessageFields fields(std::string_view text) {
    return {"net.tcp", Time::now(), Level::INFO, text, 0, "", LOG};
}

auto allOf(const MessageFields& message) {
    return std::tuple(message.loggerName, message.time.microseconds(), message.level, message.text,
                      message.line, message.file, message.type);
}

std::vector<std::string> textsOf(const MessageBatch& batch) {
    std::vector<std::string> texts;
    for (MessageBatch::Reader messages(batch); messages.hasNext();) {
        texts.emplace_back(messages.next().text);
    }
    return texts;
}

} // namespace

TEST(DispatcherSettings, KeepTheirValuesWithoutAKeyAndForABadOne) {
    DispatcherSettings settings;
    const TestSupport::StreamCapture errors(std::cerr);
    settings.read(tuning("abc", "7"));
    EXPECT_THAT(errors.text(), EndsWith("maxQueueSize. Exception: Can't convert abc to integer\n"));
    EXPECT_EQ(settings.maxQueueSize, 1024U);
    settings.read(Properties());
    EXPECT_EQ(settings.waitingPeriod, Time(7, SEC));
    EXPECT_EQ(DispatcherSettings().waitingPeriod, Time(2, SEC));
    settings.read(tuning("1", "-5"));
    EXPECT_EQ(settings.waitingPeriod, Time());
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
        queue.append(fields(text));
    }
    EXPECT_EQ(errors.text(), "");
    queue.append(fields("4"));
    EXPECT_THAT(errors.text(), StartsWith("Message queue size reached. Discarding oldest log message: "));
    EXPECT_THAT(errors.text(), EndsWith(" net.tcp INFO 1\n"));
    EXPECT_THAT(textsOf(queue.close()), ElementsAre("2", "3", "4"));
    queue.append(fields("too late"));
    EXPECT_THAT(errors.text(), HasSubstr("Discarding oldest log message: "));
    EXPECT_THAT(errors.text(), HasSubstr(" too late\n"));
}

TEST(MessageQueue, WithALimitOfOneHoldsNothingAndWithANegativeOneEverything) {
    const TestSupport::StreamCapture errors(std::cerr);
    MessageQueue none;
    none.configure(tuning("1", "3600"));
    none.append(fields("a"));
    EXPECT_THAT(errors.text(), HasSubstr(" INFO a\n"));
    EXPECT_EQ(none.close().size(), 0U);
    MessageQueue all;
    all.configure(tuning("-1", "3600"));
    for (int i = 0; i < 3000; ++i) {
        all.append(fields("b"));
    }
    EXPECT_EQ(all.close().size(), 3000U);
}

namespace {

/// A standard error that logs when it is written to, so many times.
class LoggingBuffer : public std::stringbuf {
public:
    LoggingBuffer(MessageQueue& queue, int times) : queue_(queue), times_(times) {}

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        if (--times_ >= 0) {
            queue_.append(fields("x"));
        }
        return std::stringbuf::xsputn(text, size);
    }

private:
    MessageQueue& queue_;
    int times_;
};

} // namespace

TEST(MessageQueue, ShowsEachDiscardedMessageOnceAlsoIfThatLogs) {
    MessageQueue queue;
    queue.configure(tuning("2", "3600"));
    LoggingBuffer buffer(queue, 1);
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    queue.append(fields("1"));
    queue.append(fields("2"));
    std::cerr.rdbuf(before);
    EXPECT_THAT(buffer.str(), HasSubstr(" INFO 1\n"));
    EXPECT_THAT(buffer.str(), HasSubstr(" INFO 2\n"));
    EXPECT_THAT(textsOf(queue.close()), ElementsAre("x"));
}

TEST(MessageQueue, StopsShowingIfEveryLineShownIsLoggedAgain) {
    MessageQueue queue;
    queue.configure(tuning("2", "3600"));
    LoggingBuffer buffer(queue, std::numeric_limits<int>::max());
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    queue.append(fields("1"));
    queue.append(fields("2"));
    std::cerr.rdbuf(before);
    EXPECT_GT(queue.statistics().discarded, 2U);
    EXPECT_THAT(textsOf(queue.close()), ElementsAre("x"));
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
        queue.append(fields("a"));
        queue.append(fields("b"));
    } while (batch.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready);
    EXPECT_THAT(textsOf(batch.get()), ElementsAre("a", "b"));
}

TEST(MessageQueue, DoesNotEndAWaitToMakeMemory) {
    constexpr std::size_t MESSAGES = 1000;
    MessageQueue queue;
    queue.configure(tuning("-1", "3600"));
    std::atomic<bool> stopped{false};
    auto taken = std::async(std::launch::async, [&] {
        queue.wait(stopped);
        return queue.takeBatch().size();
    });
    for (std::size_t i = 0; i < MESSAGES; ++i) {
        queue.append(fields(std::string(1000, 'a')));
    }
    queue.stop(stopped);
    EXPECT_EQ(taken.get(), MESSAGES);
}

TEST(MessageQueue, ForgetsInAForkedChildWhatTheParentHasQueued) {
    static MessageQueue& queue = *new MessageQueue; // which keeps the parent's monitor for good
    queue.append(fields("the parent's"));
    queue.lockForFork();
    queue.renewInChild();
    EXPECT_EQ(queue.statistics().queued, 0U);
    queue.append(fields("the child's"));
    EXPECT_THAT(textsOf(queue.close()), ElementsAre("the child's"));
}

namespace {

/// A standard error in which the process forks, as far as the queue in the child can tell.
class ForkingBuffer : public std::stringbuf {
public:
    explicit ForkingBuffer(MessageQueue& queue) : queue_(queue) {}

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        queue_.lockForFork();
        queue_.renewInChild();
        return std::stringbuf::xsputn(text, size);
    }

private:
    MessageQueue& queue_;
};

} // namespace

TEST(MessageQueue, IsFreeInAForkedChildOnceTheCallThatForkedIsOver) {
    static MessageQueue& queue = *new MessageQueue; // which keeps the parent's monitor for good
    queue.configure(tuning("1", "3600"));
    ForkingBuffer buffer(queue);
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    queue.append(fields("the parent's"));
    std::cerr.rdbuf(before);
    queue.configure(tuning("10", "3600"));
    for (int i = 0; i < 2; ++i) {
        std::async(std::launch::async, [] { queue.append(fields("a")); }).get();
    }
    EXPECT_EQ(queue.statistics().waiting, 2U);
    EXPECT_EQ(queue.close().size(), 2U);
}

TEST(MessageBatch, UsesTheMemoryOfDeliveredMessagesAgain) {
    MessageBatch delivered;
    delivered.append(fields("a"));
    MessageBlocks blocks = delivered.takeBlocks();
    const char* const memory = blocks.front().bytes.get();
    MessageBatch batch;
    batch.addSpares(blocks);
    batch.append(fields("b"));
    EXPECT_EQ(batch.takeBlocks().front().bytes.get(), memory);
    EXPECT_TRUE(batch.wantsSpare());
    MessageBlocks many;
    for (int i = 0; i < 100; ++i) {
        many.splice(many.end(), MessageBatch::makeSpare());
    }
    batch.addSpares(many);
    EXPECT_FALSE(batch.wantsSpare());
    EXPECT_EQ(many.size(), 84U);
}

TEST(MessageQueue, LeavesAWaitThatIsLongerThanThoseToCome) {
    for (const auto& [before, after] : {std::pair("0", "3600"), {"3600", "1800"}}) {
        MessageQueue queue;
        bool woken = false;
        while (!woken) { // a consumer that does not wait yet is not woken, so it is tried again
            std::atomic<bool> stopped{false};
            queue.configure(tuning("4", before));
            const auto wait = std::async(std::launch::async, [&] { queue.wait(stopped); });
            wait.wait_for(std::chrono::milliseconds(20));
            queue.configure(tuning("4", after));
            woken = wait.wait_for(std::chrono::milliseconds(100)) == std::future_status::ready;
            queue.stop(stopped);
        }
        EXPECT_EQ(queue.takeBatch().size(), 0U);
    }
}

TEST(AsynchronousAppenders, ShowWhatTheLastOfThemHasNotBeenGiven) {
    AsynchronousAppenders appenders;
    TestSupport::CallingAppender first([](const LogMessage&) {});
    TestSupport::CallingAppender last([&appenders](const LogMessage& message) {
        if (message.getText() == "2") {
            appenders.showRestOfDelivery();
        }
    });
    appenders.add(&first);
    appenders.add(&last);
    MessageBatch batch;
    for (const char* text : {"1", "2", "3"}) {
        batch.append(fields(text));
    }
    const TestSupport::StreamCapture errors(std::cerr);
    const LibraryCall call;
    EXPECT_TRUE(appenders.deliver(batch));
    EXPECT_THAT(errors.text(), AllOf(EndsWith(" INFO 3\n"), Not(HasSubstr(" INFO 2\n"))));
}

TEST(AsynchronousDispatcher, EndsItsConsumerWithTheLastAppender) {
    constexpr std::size_t MESSAGES = 100'000;
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
    dispatcher.configure(tuning("-1", "0"));
    std::size_t delivered = 0;
    TestSupport::CallingAppender appender([&](const LogMessage&) { ++delivered; }, false);
    dispatcher.registerAsynchronousAppender(&appender);
    dispatcher.unregisterAsynchronousAppender(&appender);
    // A consumer that went on would take these and have nobody to give them to.
    const LogMessage message = makeMessage("a");
    for (std::size_t i = 0; i < MESSAGES; ++i) {
        dispatcher.enqueue(message, true);
    }
    dispatcher.registerAsynchronousAppender(&appender);
    dispatcher.stop();
    dispatcher.unregisterAsynchronousAppender(&appender);
    EXPECT_EQ(delivered, MESSAGES);
}

TEST(MessageBatch, GivesEveryFieldBack) {
    const LogMessage messages[] = {LogMessage("net.tcp", Time(1, DAY), Level::TRACE,
                                              std::string("two\nlines and a zero \0 byte", 27), -7, "", CFG),
                                   LogMessage("", Time(), Level::AUDIT, "", 120, "Socket.cpp", LOG)};
    MessageBatch batch;
    batch.append(messages[0]);
    batch.append(messages[1]);
    MessageBatch::Reader reader(batch);
    for (const LogMessage& message : messages) {
        EXPECT_EQ(allOf(reader.next()), allOf(message));
    }
    EXPECT_FALSE(reader.hasNext());
}

TEST(MessageBatch, GivesBackWhatAMessageSharesWithTheOneBefore) {
    const std::string names[] = {"net.tcp", "net.udp"};
    const std::string files[] = {"", std::string(100, 'a'), std::string(100, 'b')};
    const auto message = [&](std::size_t i) {
        return MessageFields(names[i / 3 % 2], Time(i / 2, MSEC), Level::INFO, "text", 1, files[i / 5 % 3],
                             LOG);
    };
    MessageBatch batch;
    for (std::size_t i = 0; i < 3000; ++i) { // several blocks
        batch.append(message(i));
    }
    for (std::size_t i = 0; i < 1003; ++i) {
        EXPECT_EQ(allOf(batch.front()), allOf(message(i)));
        batch.removeFront();
    }
    MessageBatch other;
    other.append(message(2999));
    batch.swap(other);
    batch.append(message(2999));
    MessageBatch::Reader left(other);
    for (std::size_t i = 1003; i < 3000; ++i) {
        EXPECT_EQ(allOf(left.next()), allOf(message(i)));
    }
    batch.removeFront();
    EXPECT_EQ(allOf(batch.front()), allOf(message(2999)));
    for (const std::size_t i : {0U, 2999U, 2999U}) { // nothing of a block that is gone
        batch.takeBlocks();
        batch.append(message(i));
        EXPECT_EQ(allOf(batch.front()), allOf(message(i)));
    }
}

TEST(MessageBatch, ForgetsAMessageThatHadABlockOfItsOwn) {
    const std::string large(500'000, 'a'); // whose memory goes back to the system
    MessageBatch batch;
    for (int i = 0; i < 3; ++i) {
        batch.append({"net.tcp", Time(), Level::INFO, large, 1, "Socket.cpp", LOG});
        EXPECT_EQ(batch.front().text, large);
        batch.removeFront();
    }
    batch.append(fields("a"));
    EXPECT_EQ(batch.front().text, "a");
}

TEST(MessageBatch, KeepsTheOrderAcrossBlocksOfAnySize) {
    MessageBatch batch;
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < 300; ++i) {
        expected.push_back(std::string(i % 50 == 49 ? 100'000 : i * 3, static_cast<char>('a' + i % 26)));
        batch.append(fields(expected.back()));
    }
    EXPECT_EQ(textsOf(batch), expected);
    for (std::size_t i = 0; i < 200; ++i) {
        EXPECT_EQ(batch.front().text, expected[i]);
        batch.removeFront();
    }
    expected.erase(expected.begin(), expected.begin() + 200);
    EXPECT_EQ(textsOf(batch), expected);
    MessageBatch other;
    other.append(fields("other"));
    other.swap(batch);
    EXPECT_EQ(textsOf(other), expected);
    EXPECT_THAT(textsOf(batch), ElementsAre("other"));
    batch.removeFront();
    EXPECT_EQ(batch.size(), 0U);
    batch.append(fields("again"));
    EXPECT_THAT(textsOf(batch), ElementsAre("again"));
}
