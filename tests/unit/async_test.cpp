#include "TestSupport.h"

#include "log/async/AsynchronousAppenders.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/async/MessageQueue.h"
#include "log/async/Ring.h"

#include <atomic>
#include <future>
#include <iostream>
#include <limits>
#include <set>
#include <sstream>
#include <thread>
#include <tuple>
#include <utility>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;
using namespace testing;
using TestSupport::makeMessage;
using Util::Properties;

namespace {

Properties tuning(const std::string& maxQueueSize, const std::string& waitingPeriod) {
    Properties properties;
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = maxQueueSize;
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = waitingPeriod;
    return properties;
}

MessageFields fields(std::string_view text) {
    return {"net.tcp", Time::now(), Level::INFO, text, 0, "", LOG};
}

auto allOf(const MessageFields& message) {
    return std::tuple(message.loggerName, message.time.microseconds(), message.level, message.text,
                      message.line, message.file, message.type, message.form, message.place, message.values,
                      message.context, message.thread);
}

/// A process has one queue, and so has a test. It is never destroyed, since a thread may still use it after
/// the test.
MessageQueue& makeQueue(const std::string& maxQueueSize, const std::string& waitingPeriod = "3600") {
    MessageQueue& queue = *new MessageQueue;
    queue.configure(tuning(maxQueueSize, waitingPeriod));
    return queue;
}

std::vector<std::string> textsIn(MessageBatch& batch) {
    std::vector<std::string> texts;
    for (batch.rewind(); batch.hasNext();) {
        texts.emplace_back(batch.next().fields.text);
    }
    return texts;
}

std::vector<std::string> takeTexts(MessageQueue& queue) {
    MessageBatch batch;
    queue.take(batch);
    const std::vector<std::string> texts = textsIn(batch);
    queue.release(batch, true);
    return texts;
}

} // namespace

TEST(MessageQueue, PushesTheOldestOutAtItsLimit) {
    MessageQueue& queue = makeQueue("4");
    const TestSupport::StreamCapture errors(std::cerr);
    for (const char* text : {"1", "2", "3"}) {
        queue.append(fields(text));
    }
    EXPECT_EQ(errors.text(), "");
    queue.append(fields("4"));
    EXPECT_THAT(errors.text(), StartsWith("Message queue size reached. Discarding oldest log message: "));
    EXPECT_THAT(errors.text(), EndsWith(" net.tcp INFO 1\n"));
    EXPECT_THAT(takeTexts(queue), ElementsAre("2", "3", "4"));
}

TEST(MessageQueue, ShowsAtOnceWhatComesOnceItIsClosed) {
    MessageQueue& queue = makeQueue("4");
    const TestSupport::StreamCapture errors(std::cerr);
    queue.close();
    queue.append(fields("too late"));
    EXPECT_THAT(errors.text(), AllOf(StartsWith("The process ends. "), EndsWith(" too late\n")));
    EXPECT_THAT(takeTexts(queue), IsEmpty());
}

TEST(MessageQueue, HoldsNoMoreThanItMayHoweverManyAppendAtOnce) {
    MessageQueue& queue = makeQueue("4");
    const TestSupport::StreamCapture errors(std::cerr);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&queue] {
            for (int i = 0; i < 20'000; ++i) {
                queue.append(fields("a"));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(takeTexts(queue), SizeIs(3));
}

TEST(MessageQueue, WithALimitOfOneHoldsNothingAndWithANegativeOneEverything) {
    const TestSupport::StreamCapture errors(std::cerr);
    MessageQueue& queue = makeQueue("1");
    queue.append(fields("a"));
    EXPECT_THAT(errors.text(), HasSubstr(" INFO a\n"));
    EXPECT_THAT(takeTexts(queue), IsEmpty());
    queue.configure(tuning("-1", "3600"));
    for (int i = 0; i < 3000; ++i) {
        queue.append(fields("b"));
    }
    EXPECT_THAT(takeTexts(queue), SizeIs(3000));
}

/// The consumer may have taken what a call is about to discard; a call that waited for it would hang here.
TEST(MessageQueue, WithoutAnyRoomDiscardsNoMoreThanTheConsumerHasLeft) {
    constexpr std::uint64_t MESSAGES = 2'000;
    MessageQueue& queue = makeQueue("0");
    const TestSupport::StreamCapture errors(std::cerr);
    std::atomic<bool> isOver{false};
    const auto consumer = std::async(std::launch::async, [&] {
        while (!isOver) {
            takeTexts(queue);
        }
    });
    for (std::uint64_t i = 0; i < MESSAGES; ++i) {
        queue.append(fields("a"));
    }
    isOver = true;
    consumer.wait();
    const LogStatistics statistics = queue.statistics();
    EXPECT_EQ(statistics.delivered + statistics.discarded, MESSAGES);
    EXPECT_EQ(TestSupport::lastWordsIn(errors.text()).size(), statistics.discarded);
}

namespace {

/// A standard error that logs a given number of times when it is written to.
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
    MessageQueue& queue = makeQueue("2");
    LoggingBuffer buffer(queue, 1);
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    queue.append(fields("1"));
    queue.append(fields("2"));
    std::cerr.rdbuf(before);
    EXPECT_THAT(TestSupport::lastWordsIn(buffer.str()), ElementsAre("1", "2"));
    EXPECT_THAT(takeTexts(queue), ElementsAre("x"));
}

TEST(MessageQueue, StopsShowingIfEveryLineShownIsLoggedAgain) {
    MessageQueue& queue = makeQueue("2");
    LoggingBuffer buffer(queue, std::numeric_limits<int>::max());
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    queue.append(fields("1"));
    queue.append(fields("2"));
    std::cerr.rdbuf(before);
    EXPECT_GT(queue.statistics().discarded, 2U);
    EXPECT_THAT(takeTexts(queue), ElementsAre("x"));
}

namespace {

/// A standard error that blocks until it is released.
class StuckBuffer : public std::stringbuf {
public:
    void waitUntilInUse() { inUse_.get_future().wait(); }
    void release() { released_.set_value(); }

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        if (!std::exchange(hasBeenUsed_, true)) {
            inUse_.set_value();
            released_.get_future().wait();
        }
        return std::stringbuf::xsputn(text, size);
    }

private:
    bool hasBeenUsed_ = false;
    std::promise<void> inUse_;
    std::promise<void> released_;
};

} // namespace

TEST(MessageQueue, LetsNobodyElseWaitForAStandardErrorThatNobodyReads) {
    MessageQueue& queue = makeQueue("3");
    StuckBuffer buffer;
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    auto stuck = std::async(std::launch::async, [&queue] {
        for (const char* text : {"1", "2", "3"}) {
            queue.append(fields(text));
        }
    });
    buffer.waitUntilInUse();
    queue.append(fields("4")); // discards as well, and hands the line over to the other thread
    queue.append(fields("5"));
    EXPECT_FALSE(queue.flush(Time(1, USEC)));
    EXPECT_EQ(queue.statistics().discarded, 3U);
    EXPECT_THAT(takeTexts(queue), ElementsAre("4", "5"));
    buffer.release();
    stuck.get();
    std::cerr.rdbuf(before);
    EXPECT_THAT(TestSupport::lastWordsIn(buffer.str()), ElementsAre("1", "2", "3"));
}

TEST(MessageQueue, WakesTheConsumerWhenItIsHalfFull) {
    MessageQueue& queue = makeQueue("4");
    queue.setServed(true);
    const auto wait = std::async(std::launch::async, [&queue] { queue.wait(); });
    // A notification is lost if the consumer is not waiting yet, so the queue is filled until one arrives; if
    // none ever wakes it, the test hangs.
    do {
        takeTexts(queue);
        queue.append(fields("a"));
        queue.append(fields("b"));
    } while (wait.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready);
    EXPECT_THAT(takeTexts(queue), ElementsAre("a", "b"));
}

TEST(MessageQueue, LeavesAWaitThatIsLongerThanThoseToCome) {
    MessageQueue& queue = makeQueue("4");
    for (const auto& [before, after] : {std::pair("0", "3600"), {"3600", "1800"}}) {
        bool woken = false;
        while (!woken) { // a consumer that is not waiting yet is not woken, so retry
            queue.setServed(true);
            queue.configure(tuning("4", before));
            const auto wait = std::async(std::launch::async, [&queue] { queue.wait(); });
            wait.wait_for(std::chrono::milliseconds(20));
            queue.configure(tuning("4", after));
            woken = wait.wait_for(std::chrono::milliseconds(100)) == std::future_status::ready;
            queue.setServed(false);
        }
    }
}

TEST(MessageQueue, ShowsAtTheEndOfTheProcessWhatADeliveryHasNotGivenToAllAppenders) {
    MessageQueue& queue = makeQueue("10");
    for (const char* text : {"1", "2", "3"}) {
        queue.append(fields(text));
    }
    MessageBatch batch;
    queue.take(batch);
    queue.append(fields("4"));
    batch.rewind();
    batch.next();
    batch.setGivenTo(1);
    batch.next();
    TestSupport::StreamCapture errors(std::cerr);
    queue.close();
    queue.showRestOfDelivery();
    queue.showAll();
    EXPECT_THAT(TestSupport::lastWordsIn(errors.text()), ElementsAre("2", "3", "4"));
    queue.release(batch, true);
}

/// Threads start and end while others take and discard; each message arrives once, and each thread's in
/// order.
TEST(MessageQueue, KeepsTheOrderOfManyShortThreads) {
    constexpr int THREADS = 1000;
    MessageQueue& queue = makeQueue("-1");
    std::vector<int> next(THREADS);
    const auto check = [&] {
        for (const std::string& text : takeTexts(queue)) {
            const std::size_t colon = text.find(':');
            EXPECT_EQ(std::stoi(text.substr(colon + 1)), next[std::stoul(text.substr(0, colon))]++);
        }
    };
    for (int thread = 0; thread < THREADS; thread += 4) {
        std::vector<std::thread> threads;
        for (int i = thread; i < thread + 4; ++i) {
            threads.emplace_back([&queue, i] {
                for (int number = 0; number < 100; ++number) { // more than a ring's first block holds
                    queue.append(fields(std::to_string(i) + ":" + std::to_string(number)));
                }
            });
        }
        check();
        for (std::thread& ended : threads) {
            ended.join();
        }
    }
    check();
    EXPECT_THAT(next, Each(100));
}

TEST(MessageQueue, ForgetsInAForkedChildWhatTheParentHasQueued) {
    MessageQueue& queue = makeQueue("10");
    queue.append(fields("the parent's"));
    queue.renewInChild();
    EXPECT_EQ(queue.statistics().queued, 0U);
    queue.append(fields("the child's"));
    EXPECT_THAT(takeTexts(queue), ElementsAre("the child's"));
}

TEST(AsynchronousDispatcher, EndsItsConsumerWithTheLastAppender) {
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
    std::vector<std::string> delivered;
    TestSupport::CallingAppender appender(
        [&](const LogMessage& given) { delivered.push_back(given.getText()); }, false);
    dispatcher.registerAsynchronousAppender(&appender);
    dispatcher.unregisterAsynchronousAppender(&appender);
    const LogMessage message = makeMessage("a"); // the queue does not copy its logger's name
    dispatcher.enqueue(message, true);
    EXPECT_FALSE(dispatcher.flush(Time())); // a consumer would take it, with no appender to deliver to
    EXPECT_EQ(dispatcher.statistics().waiting, 1U);
    dispatcher.registerAsynchronousAppender(&appender);
    EXPECT_TRUE(dispatcher.flush(Time()));
    dispatcher.unregisterAsynchronousAppender(&appender);
    EXPECT_THAT(delivered, ElementsAre("a"));
}

namespace {

/// The messages of a ring, starting at a cursor.
std::vector<PackedMessage::Unpacked> read(Ring& ring) {
    std::vector<PackedMessage::Unpacked> messages;
    ring.findFront(0);
    ring.keep();
    for (Ring::Cursor cursor = ring.front(); cursor.findNext(ring.lastKept());) {
        messages.push_back(cursor.next());
    }
    return messages;
}

} // namespace

TEST(Ring, GivesEveryFieldBackAlsoWhereAMessageSharesItWithTheOneBefore) {
    const std::string names[] = {"net.tcp", "net.udp"};
    const std::string files[] = {"", std::string(100, 'a'), std::string(100, 'b')};
    const std::string texts[] = {std::string("two\nlines and a zero \0 byte", 27), "",
                                 std::string(70'000, 'c')};
    const std::string pairs[] = {"", "one pair", std::string("another pair \0", 14)};
    const auto withoutPairs = [&](std::size_t i) {
        if (i / 4 % 3 == 0) {
            const Place place{files[i / 2 % 3], texts[i % 2], static_cast<int>(i / 8 % 2), Level::AUDIT};
            return MessageFields(names[i / 3 % 2], Time(i / 2, MSEC), knownPlace(place), texts[i % 2],
                                 static_cast<TextForm>(i % 3), nullptr);
        }
        return MessageFields(names[i / 3 % 2], Time(i / 2, MSEC), Level::INFO, texts[i % 97 == 0 ? 2 : i % 2],
                             static_cast<int>(i % 3) - 1, files[i / 5 % 3], i % 4 == 0 ? CFG : LOG);
    };
    const auto message = [&](std::size_t i) {
        MessageFields made = withoutPairs(i);
        made.values = pairs[i % 3];
        made.context = pairs[i / 10 % 3];
        made.thread = i / 500;
        return made;
    };
    // A ring whose thread has not logged for long: the difference to the next number exceeds 32 bits.
    const auto number = [](std::size_t i) { return 7 + i + (i > 1500 ? (std::uint64_t{1} << 33) : 0); };
    BlockPool pool;
    Ring ring(pool);
    for (std::size_t i = 0; i < 3000; ++i) {
        ring.append(*ring.reserve(message(i), static_cast<int>(i % 5), number(i) - 1), number(i));
    }
    const std::vector<PackedMessage::Unpacked> messages = read(ring);
    ASSERT_THAT(messages, SizeIs(3000));
    for (std::size_t i = 0; i < messages.size(); ++i) {
        ASSERT_EQ(allOf(messages[i].fields), allOf(message(i))) << i;
        ASSERT_EQ(messages[i].number, number(i));
        ASSERT_EQ(messages[i].answeredReports, static_cast<int>(i % 5));
    }
    ring.release(Ring::Cursor());
    EXPECT_TRUE(ring.findFront(number(2000)));
    EXPECT_EQ(ring.front().nextNumber(), number(2000));
}

/// A queue that stays full must not grow during a delivery.
TEST(Ring, FreesWhatIsTakenOutBehindWhatItKeeps) {
    BlockPool pool;
    Ring ring(pool);
    const std::string text(10'000, 'a');
    std::uint64_t number = 0;
    const auto append = [&] { ring.append(*ring.reserve(fields(text), 0, number), number + 1), ++number; };
    for (int i = 0; i < 20; ++i) {
        append();
    }
    EXPECT_THAT(read(ring), SizeIs(20));
    const Ring::Cursor kept = ring.front();
    std::set<const MessageBlock*> blocks;
    for (int i = 0; i < 1000; ++i) {
        append();
        EXPECT_TRUE(ring.findFront(number));
        blocks.insert(ring.front().block());
    }
    EXPECT_LE(blocks.size(), 20U);
    Ring::Cursor again = kept;
    for (std::uint64_t expected = 1; expected <= 20; ++expected) {
        ASSERT_TRUE(again.findNext(ring.lastKept()));
        EXPECT_EQ(again.next().number, expected);
    }
    ring.release(again);
    EXPECT_TRUE(ring.findFront(0));
    EXPECT_EQ(ring.front().nextNumber(), number);
}
