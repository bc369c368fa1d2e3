#include "AcceptanceSupport.h"

#include "log/LogSession.h"

#include <future>

using namespace ZAV;
using namespace ZAV::Log;
using namespace testing;
using TestSupport::CallingAppender;
using TestSupport::CallingListener;
using TestSupport::inThreads;
using Util::TimeUtils::Time;

namespace {

class Flush : public TestSupport::Application {
protected:
    /// The consumer runs by itself only when the queue is half full.
    static std::string queued() {
        return "appender.queued = FileAppender\n"
               "appender.queued.asynchronous = true\n"
               "appender.queued.dir = DIR\n"
               "appender.queued.fileMaxSize = 1000000\n"
               "appender.broken = SimpleFileAppender\n"
               "appender.broken.asynchronous = true\n"
               "appender.broken.filters = broken\n"
               "appender.broken.dir = DIR/missing\n"
               "zav.log.AsynchronousDispatcher.waitingPeriod = 3600\n";
    }

    static void log(int count) {
        for (int number = 0; number < count; ++number) {
            LoggerFactory::getLogger("net").error(std::to_string(number), 0, "");
        }
    }
};

/// Every message, whatever else the test has logged, must be counted exactly once.
void expectConserved(const LogStatistics& statistics) {
    EXPECT_EQ(statistics.waiting, 0U);
    EXPECT_EQ(statistics.queued, statistics.delivered + statistics.discarded);
}

} // namespace

TEST_F(Flush, HasWrittenWhatWasQueuedDuringARoundAndNeverWaitsInVain) {
    ASSERT_TRUE(init(queued() + "zav.log.AsynchronousDispatcher.maxQueueSize = -1\n"));
    std::promise<void> entered;
    std::promise<void> released;
    bool flushedInside = true;
    CallingListener holding([&](const std::string&) {
        flushedInside = LogManager::flush();
        entered.set_value();
        released.get_future().wait();
    });
    LogManager::registerCommandListener("EXCEPTION", &holding);
    LoggerFactory::getLogger("broken").error("broken", 0, "");
    EXPECT_FALSE(LogManager::flush(Time(1, Util::TimeUtils::USEC))); // wakes the consumer anyway
    entered.get_future().wait();
    log(10);
    EXPECT_EQ(LogManager::statistics().waiting, 11U);
    released.set_value();
    EXPECT_TRUE(LogManager::flush());
    EXPECT_FALSE(flushedInside);
    EXPECT_THAT(linesOf("queued0"), SizeIs(11));
    LogManager::finish();
    EXPECT_EQ(LogManager::statistics().failed, 1U);
    EXPECT_EQ(LogManager::statistics().delivered, 11U);

    CallingAppender unregistered([](const LogMessage&) {}, false);
    LoggerFactory::getLogger("net").addAppender(&unregistered);
    log(1);
    EXPECT_FALSE(LogManager::flush()); // no consumer delivers it
    LoggerFactory::getLogger("net").removeAppender(&unregistered);
}

TEST_F(Flush, ComesWithTheEndOfASessionThatHasInitialised) {
    Util::Properties properties;
    properties["appender.queued"] = "FileAppender";
    properties["appender.queued.asynchronous"] = "true";
    properties["appender.queued.dir"] = directory_.path();
    {
        const LogSession session(properties);
        { const LogSession inner(properties); }
        log(3);
    }
    EXPECT_THAT(linesOf("queued0"), SizeIs(3));
    EXPECT_TRUE(LogManager::init(properties));
}

/// Each report makes the consumer log through the logger whose producers wait for it. It must not wait
/// itself, so its message may evict another, and what it logs in its last round stays for the next consumer.
TEST_F(Flush, FollowsProducersThatWaitForRoomInsteadOfDiscarding) {
    CallingListener answering([](const std::string&) { log(1); });
    for (const std::string limit : {"-1", "0", "1", "2", "3", "1024"}) {
        ASSERT_TRUE(init(queued() + "zav.log.AsynchronousDispatcher.overflow = block\n" +
                         "zav.log.AsynchronousDispatcher.maxQueueSize = " + limit + "\n"));
        LogManager::registerCommandListener("EXCEPTION", &answering);
        const LogStatistics before = LogManager::statistics();
        TestSupport::StandardErrorCapture errors;
        inThreads(4, [](int) {
            log(300);
            LoggerFactory::getLogger("broken").error("broken", 0, "");
        });
        EXPECT_TRUE(LogManager::flush()) << limit;
        LogManager::finish();
        const LogStatistics after = LogManager::statistics();
        const bool hasRoom = limit != "0" && limit != "1";
        const std::uint64_t kept = after.delivered + after.waiting - before.delivered - before.waiting;
        EXPECT_GE((hasRoom ? kept : after.discarded - before.discarded), 1204U) << limit;
        EXPECT_LE(after.waiting, 4U) << limit;
        errors.text();
    }
}

TEST_F(Flush, LeavesNoProducerWaitingForAConsumerThatEnds) {
    const TestSupport::StandardErrorCapture errors; // without a consumer messages are discarded
    std::atomic<bool> finished{false};
    std::vector<std::thread> producers;
    for (int number = 0; number < 4; ++number) {
        producers.emplace_back([&finished] {
            while (!finished) {
                log(10);
            }
        });
    }
    for (int round = 0; round < 10; ++round) {
        ASSERT_TRUE(init(queued() + "zav.log.AsynchronousDispatcher.overflow = block\n"
                                    "zav.log.AsynchronousDispatcher.maxQueueSize = 4\n"));
        EXPECT_TRUE(LogManager::flush()); // otherwise each round leaves more to the next
        LogManager::finish();
    }
    finished = true;
    for (std::thread& producer : producers) {
        producer.join(); // a hang here is the failure
    }
    ASSERT_TRUE(init(queued()));
    EXPECT_TRUE(LogManager::flush());
    expectConserved(LogManager::statistics());
}

/// The consumer may make room just when the call finds none. No other thread would wake the producer then.
TEST_F(Flush, LetsASoleProducerGoOnWheneverThereIsRoom) {
    ASSERT_TRUE(init(queued() + "zav.log.AsynchronousDispatcher.overflow = block\n"
                                "zav.log.AsynchronousDispatcher.maxQueueSize = 2\n"));
    log(5000); // a hang here is the failure
    EXPECT_TRUE(LogManager::flush());
    EXPECT_EQ(LogManager::statistics().discarded, 0U);
}

TEST_F(Flush, LeavesCountersThatAddUpUnderEightProducers) {
    const TestSupport::StandardErrorCapture errors;
    ASSERT_TRUE(init(queued() + "zav.log.AsynchronousDispatcher.maxQueueSize = 64\n"));
    const LogStatistics before = LogManager::statistics();
    inThreads(8, [](int) { log(1000); });
    EXPECT_TRUE(LogManager::flush());
    const LogStatistics after = LogManager::statistics();
    expectConserved(after);
    EXPECT_EQ(after.queued - before.queued, 8000U);
    EXPECT_EQ(linesOf("queued0").size(), after.delivered - before.delivered);
}

TEST_F(Flush, HasWrittenTheBatchesOfBothKindsOfFilesAndReportedWhatIsInNone) {
    ASSERT_TRUE(init(queued() + "appender.queued.flush = batch\n"
                                "appender.queued.fileMaxSizeUnit = B\n" // smaller than a batch
                                "appender.broken.flush = batch\n"
                                "appender.single = SimpleFileAppender\n"
                                "appender.single.asynchronous = true\n"
                                "appender.single.flush = batch\n"
                                "appender.single.dir = DIR\n"
                                "appender.at-once = FileAppender\n"
                                "appender.at-once.flush = batch\n" // has no effect on a synchronous appender
                                "appender.at-once.dir = DIR\n"
                                "zav.log.AsynchronousDispatcher.maxQueueSize = -1\n"));
    std::vector<std::string> reports;
    CallingListener recording([&reports](const std::string& report) { reports.push_back(report); });
    LogManager::registerCommandListener("EXCEPTION", &recording);
    for (int number = 0; number < 30'000; number += 100) {
        log(100);
        LoggerFactory::getLogger("broken").error(std::to_string(number), 0, "");
    }
    EXPECT_THAT(linesOf("at-once0"), SizeIs(30'300));
    EXPECT_TRUE(LogManager::flush());
    ASSERT_THAT(reports, SizeIs(300));
    for (std::size_t i = 0; i < reports.size(); ++i) {
        EXPECT_THAT(reports[i], EndsWith(" broken ERROR " + std::to_string(i * 100)));
    }
    const std::vector<std::string> all = lastWordsOf("at-once0");
    EXPECT_EQ(lastWordsOf("single"), all);
    std::vector<std::string> rotated = lastWordsOf("queued1");
    const std::vector<std::string> newer = lastWordsOf("queued0");
    rotated.insert(rotated.end(), newer.begin(), newer.end());
    EXPECT_EQ(rotated, all);
}

TEST_F(Flush, ReachesAnAppenderOfTheApplicationWithTheMessagesOfTheLoggersThatListIt) {
    ASSERT_TRUE(init(queued()));
    std::vector<std::string> texts;
    CallingAppender appender([&texts](const LogMessage& message) { texts.push_back(message.getText()); },
                             false);
    Logger& listing = LoggerFactory::getLogger("net.tcp");
    listing.addAppender(&appender);
    LogManager::addAsynchronousAppender(&appender);
    LoggerFactory::getLogger("net").error("other", 0, "");
    listing.error("first", 0, "");
    EXPECT_TRUE(LogManager::flush());
    LogManager::finish();
    listing.error("after finish", 0, "");
    EXPECT_TRUE(LogManager::flush()); // the consumer keeps running for it
    listing.error("never given", 0, "");
    LogManager::removeAsynchronousAppender(&appender);
    ASSERT_TRUE(init(queued()));
    EXPECT_TRUE(LogManager::flush());
    EXPECT_THAT(texts, ElementsAre("first", "after finish"));
    listing.removeAppender(&appender);
}

/// It removes itself during a delivery, where waiting for the delivery would deadlock.
TEST_F(Flush, BearsAnAppenderThatTakesItselfOff) {
    int calls = 0;
    Appender* self = nullptr;
    CallingAppender appender(
        [&](const LogMessage&) {
            ++calls;
            LogManager::removeAsynchronousAppender(self);
        },
        false);
    self = &appender;
    LoggerFactory::getLogger("net").addAppender(&appender);
    LogManager::addAsynchronousAppender(&appender);
    log(3);
    EXPECT_TRUE(LogManager::flush());
    EXPECT_EQ(calls, 1);
    LoggerFactory::getLogger("net").removeAppender(&appender);
}
