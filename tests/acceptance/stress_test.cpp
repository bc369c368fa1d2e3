#include "AcceptanceSupport.h"

#include <algorithm>
#include <atomic>
#include <map>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

constexpr int PRODUCERS = 8;
constexpr int MESSAGES = 1500; ///< of each producer
constexpr int FILES = 10;      ///< of a file appender

const std::string LOGGERS[] = {"net", "net.tcp", "db", "db.table"}; ///< two producers share each

/// The numbers of each producer's messages, in the order of the lines, which end like "producer:net:3:1017".
using Numbers = std::map<std::string, std::vector<int>>;

Numbers producedIn(const std::string& text) {
    Numbers numbers;
    for (const std::string& word : lastWordsIn(text)) {
        if (word.rfind("producer:", 0) == 0) {
            const std::size_t colon = word.rfind(':');
            numbers[word.substr(0, colon)].push_back(std::stoi(word.substr(colon + 1)));
        }
    }
    return numbers;
}

void expectOrder(const Numbers& numbers) {
    for (const auto& [producer, ofProducer] : numbers) {
        EXPECT_TRUE(std::is_sorted(ofProducer.begin(), ofProducer.end())) << producer;
    }
}

/// Every message of every producer must be there exactly once, in any order.
void expectEachOnce(Numbers numbers) {
    EXPECT_THAT(numbers, SizeIs(PRODUCERS));
    for (auto& [producer, ofProducer] : numbers) {
        std::sort(ofProducer.begin(), ofProducer.end());
        ASSERT_THAT(ofProducer, SizeIs(MESSAGES)) << producer;
        for (int number = 0; number < MESSAGES; ++number) {
            ASSERT_EQ(ofProducer[static_cast<std::size_t>(number)], number) << producer;
        }
    }
}

class Stress : public Application {
protected:
    bool initWith(const std::string& maxQueueSize) {
        std::string lines = "appender.broken = SimpleFileAppender\n"
                            "appender.broken.asynchronous = true\n"
                            "appender.broken.filters = broken\n"
                            "appender.broken.dir = DIR/missing\n"
                            "appender.async.asynchronous = true\n"
                            "appender.filtered = SimpleFileAppender\n"
                            "appender.filtered.asynchronous = true\n"
                            "appender.filtered.filters = net\n"
                            "appender.filtered.level = ERROR\n"
                            "appender.filtered.expiration = 1 hour\n"
                            "appender.filtered.dir = DIR\n"
                            // With prompt delivery the second consumer would write the rest to the first
                            // appender registered.
                            "zav.log.AsynchronousDispatcher.waitingPeriod = 1\n"
                            "zav.log.AsynchronousDispatcher.maxQueueSize = " +
                            maxQueueSize + "\n";
        for (const std::string name : {"appender.sync", "appender.async"}) {
            lines += name + " = FileAppender\n" + name + ".dir = DIR\n" + name + ".fileNumber = 9\n" + name +
                     ".fileMaxSize = 200\n" + name + ".fileMaxSizeUnit = KB\n";
        }
        return init(lines);
    }

    /// What the producers wrote to a series of files, oldest first.
    Numbers producedInSeries(const std::string& name) const {
        std::string text;
        for (int index = FILES - 1; index >= 0; --index) {
            text += readFile(directory_ / (name + std::to_string(index)));
        }
        return producedIn(text);
    }

    /// Logs from all producers at once, while everything that can change is changed.
    void logWhileAllChanges();

    /// \param shown the producers' messages that were shown on standard error
    void expectEachWrittenOrShown(const Numbers& shown) const;

    std::atomic<int> logged_{0};
};

void Stress::logWhileAllChanges() {
    const Level::LogLevel levels[] = {Level::LEVEL_AUDIT, Level::LEVEL_WARNING, Level::LEVEL_TRACE};
    std::atomic<int> seen{0};
    CallingAppender appender([&seen](const LogMessage&) { ++seen; });
    std::atomic<int> heard{0};
    CallingListener listener([&heard](const std::string&) { ++heard; });
    const std::function<void(int)> changes[] = {
        [&](int round) {
            LoggerFactory::getLogger(LOGGERS[round % 4]).setLevel(levels[round % 3], round % 2 == 0);
            LoggerFactory::getRootLogger().setLevel(levels[(round + 1) % 3], false);
        },
        [](int round) { // creates them, and looks them up once all exist
            const std::string name = LOGGERS[round % 4] + ".made" + std::to_string(round % 400);
            LoggerFactory::getLogger(name).audit("other", 0, "");
        },
        [&](int round) {
            Logger& logger =
                round % 2 == 0 ? LoggerFactory::getRootLogger() : LoggerFactory::getLogger("net");
            const int before = seen;
            logger.addAppender(&appender);
            logger.audit("other", 0, "");
            logger.removeAppender(&appender);
            EXPECT_GT(seen, before);
        },
        [&](int round) {
            LogManager::registerCommandListener("stress", &listener);
            LogManager::command("stress", "");
            LogManager::command("DynamicLogLevelFilterSoft", "DEBUG");
            LogManager::unregisterCommandListener("stress");
            EXPECT_EQ(heard, round + 1);
        }};
    std::atomic<int> producing{PRODUCERS};
    inThreads(PRODUCERS + 4, [&](int thread) {
        for (int round = 0; thread >= PRODUCERS && producing > 0; ++round) {
            changes[thread - PRODUCERS](round);
            std::this_thread::yield();
        }
        if (thread < PRODUCERS) {
            const std::string& name = LOGGERS[thread % 4];
            const std::string producer = "producer:" + name + ":" + std::to_string(thread) + ":";
            for (int number = 0; number < MESSAGES; ++number) {
                LoggerFactory::getLogger(name).audit(producer + std::to_string(number), 0, "");
                ++logged_;
            }
            --producing;
        }
    });
}

void Stress::expectEachWrittenOrShown(const Numbers& shown) const {
    const Numbers synchronous = producedInSeries("sync");
    expectOrder(synchronous);
    expectEachOnce(synchronous);

    Numbers asynchronous = producedInSeries("async");
    expectOrder(asynchronous);
    expectOrder(shown);
    Numbers ofNet;
    std::copy_if(asynchronous.begin(), asynchronous.end(), std::inserter(ofNet, ofNet.end()),
                 [](const auto& numbers) { return numbers.first.rfind("producer:net", 0) == 0; });
    EXPECT_EQ(producedIn(readFile(directory_ / "filtered")), ofNet);

    for (const auto& [producer, numbers] : shown) {
        std::vector<int>& all = asynchronous[producer];
        all.insert(all.end(), numbers.begin(), numbers.end());
    }
    expectEachOnce(asynchronous);
}

} // namespace

TEST_F(Stress, EveryMessageIsDeliveredOnceOrShown) {
    for (const std::string maxQueueSize : {"-1", "64"}) {
        StandardErrorCapture errors;
        // Holds the consumer until a limited queue is certain to overflow.
        CallingListener holding([this](const std::string&) {
            while (logged_ < 10 * 64) {
                std::this_thread::yield();
            }
        });
        ASSERT_TRUE(initWith(maxQueueSize));
        LogManager::registerCommandListener("EXCEPTION", &holding);
        LoggerFactory::getLogger("broken").audit("broken", 0, "");
        logWhileAllChanges();
        LogManager::finish();
        // The consumer thread of a new `init` writes what was left in the queue.
        ASSERT_TRUE(initWith(maxQueueSize));
        LogManager::finish();

        const std::string text = errors.text();
        for (const std::string& line : linesIn(text, 0)) {
            ASSERT_EQ(line.find("Message queue size reached. Discarding oldest log message: "), 0U) << line;
        }
        const Numbers shown = producedIn(text);
        EXPECT_EQ(shown.empty(), maxQueueSize == "-1");
        expectEachWrittenOrShown(shown);
        for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
            std::filesystem::remove(entry);
        }
        logged_ = 0;
    }
}
