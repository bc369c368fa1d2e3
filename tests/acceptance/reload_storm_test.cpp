#include "AcceptanceSupport.h"

#include "log/AppenderOptions.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <memory>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

constexpr int PRODUCERS = 4;
constexpr int LOGGERS = 2 * PRODUCERS;      ///< the producers', and those that an appender logs to
constexpr std::size_t MAX_MESSAGES = 5'000; ///< per logger and change

/// How often each message of each logger has reached each appender of both configurations.
class Arrivals {
public:
    using Counts = std::vector<std::atomic<std::uint8_t>>;

    explicit Arrivals(std::size_t messages) {
        for (Counts& counts : counts_) {
            counts = Counts(messages);
        }
    }

    /// \param place 0 or 1 for the synchronous appender of either configuration, 2 or 3 for the asynchronous
    /// one
    void add(std::size_t place, const LogMessage& message) {
        const auto logger = static_cast<std::size_t>(message.getLoggerName().back() - '0');
        ++counts_[place * LOGGERS + logger][std::stoul(message.getText())];
    }

    int at(std::size_t place, std::size_t logger, std::size_t number) const {
        return counts_[place * LOGGERS + logger][number];
    }

    /// \return how many messages up to a number have not reached both appenders of exactly one configuration
    std::size_t countWrong(std::size_t logger, std::size_t messages) const {
        std::size_t wrong = 0;
        for (std::size_t number = 0; number < messages; ++number) {
            const bool isInFirst = at(0, logger, number) == 1 && at(2, logger, number) == 1 &&
                                   at(1, logger, number) == 0 && at(3, logger, number) == 0;
            const bool isInSecond = at(1, logger, number) == 1 && at(3, logger, number) == 1 &&
                                    at(0, logger, number) == 0 && at(2, logger, number) == 0;
            wrong += isInFirst != isInSecond ? 0 : 1;
        }
        return wrong;
    }

private:
    std::array<Counts, std::size_t{4} * LOGGERS> counts_;
};

class ArrivalAppender : public Appender {
public:
    ArrivalAppender(const AppenderOptions& options, Arrivals& arrivals)
        : Appender(options), arrivals_(arrivals), place_(std::stoul(options.value("place"))) {}

private:
    void doOutput(const LogMessage& message) override { arrivals_.add(place_, message); }

    Arrivals& arrivals_;
    const std::size_t place_;
};

Logger& loggerOf(std::size_t number) {
    return LoggerFactory::getLogger("storm.logger" + std::to_string(number));
}

/// \return the number of changes in a storm
int changesOfStorm() {
    const char* const wanted = std::getenv("ZAV_LOG_RELOADS"); // set by scripts/nightly
    return wanted != nullptr ? std::stoi(wanted) : 100;
}

/// \param logsFromInside whether an appender logs what it gets; as that cannot wait for room, the queue is
///        unlimited then. Otherwise the queue is short, and calls wait for room.
class ReloadStorm : public Application, public WithParamInterface<bool> {
protected:
    /// Two configurations whose appenders record each message, and one that writes the first logger's to a
    /// file, which is asynchronous in the second configuration if the queue is short.
    static std::string configuration(int number) {
        const std::string place = std::to_string(number);
        const std::string sync = "appender.sync" + place;
        const std::string async = "appender.async" + place;
        const std::string numberOfFiles = number == 0 ? "3" : "4";
        std::string lines =
            sync + " = ArrivalAppender\n" + sync + ".place = " + place + "\n" + async +
            " = ArrivalAppender\n" + async + ".asynchronous = true\n" + async +
            ".place = " + std::to_string(number + 2) + "\n" +
            "appender.file = SimpleFileAppender\nappender.file.dir = DIR\n"
            "appender.file.filters = storm.logger0\n"
            "appender.series = FileAppender\nappender.series.dir = DIR\n"
            "appender.series.filters = storm.logger1\n"
            "appender.series.fileNumber = " +
            numberOfFiles + "\n" +
            "zav.log.AsynchronousDispatcher.overflow = block\n"
            "zav.log.AsynchronousDispatcher.priority = 2" + // each change needs a new consumer thread
            (number == 0 ? "5" : "6") +
            "\n"
            "zav.log.AsynchronousDispatcher.maxQueueSize = " +
            (GetParam() ? "-1" : "100") + "\n";
        return number == 0 || GetParam() ? lines : lines + "appender.file.asynchronous = true\n";
    }

    /// Logs until it is stopped, but no faster than an unlimited queue is delivered.
    void produce(std::size_t producer) {
        Logger& logger = loggerOf(producer);
        std::size_t number = 0;
        for (; number < messagesAtMost_ && !isOver_; ++number) {
            logger.error(std::to_string(number));
            while (number % 100 == 0 && LogManager::statistics().waiting > 2000) {
                std::this_thread::yield();
            }
        }
        messages_[producer] = number;
    }

    const int changes_ = changesOfStorm();
    const std::size_t messagesAtMost_ = MAX_MESSAGES * static_cast<std::size_t>(changes_);
    Arrivals arrivals_{messagesAtMost_};
    std::array<std::atomic<std::size_t>, LOGGERS> messages_{};
    std::atomic<bool> isOver_{false};
};

} // namespace

TEST_P(ReloadStorm, HasEachMessageInOneOfTheConfigurations) {
    LogManager::registerAppenderClass("ArrivalAppender", [this](const AppenderOptions& options) {
        return std::make_unique<ArrivalAppender>(options, arrivals_);
    });
    CallingAppender logging([this](const LogMessage& message) {
        const auto inner = static_cast<std::size_t>(message.getLoggerName().back() - '0') + PRODUCERS;
        if (inner < LOGGERS) {
            loggerOf(inner).error(std::to_string(messages_[inner]++));
        }
    });
    ASSERT_TRUE(init(configuration(0)));
    for (std::size_t logger = 0; GetParam() && logger < PRODUCERS; ++logger) {
        loggerOf(logger).addAppender(&logging);
    }
    std::vector<std::thread> producers;
    for (std::size_t producer = 0; producer < PRODUCERS; ++producer) {
        producers.emplace_back([this, producer] { produce(producer); });
    }
    for (int number = 1; number <= changes_; ++number) {
        reload(configuration(number % 2));
    }
    isOver_ = true;
    for (std::thread& producer : producers) {
        producer.join();
    }
    ASSERT_TRUE(LogManager::flush());
    std::size_t total = 0;
    for (std::size_t logger = 0; logger < LOGGERS; ++logger) {
        EXPECT_EQ(arrivals_.countWrong(logger, messages_[logger]), 0U) << logger;
        total += messages_[logger];
    }
    const std::vector<std::string> inFile = lastWordsOf("file");
    EXPECT_THAT(inFile, SizeIs(messages_[0].load()));
    for (std::size_t number = 0; number < inFile.size(); ++number) {
        ASSERT_EQ(inFile[number], std::to_string(number));
    }
    const LogStatistics statistics = LogManager::statistics();
    EXPECT_EQ(statistics.queued, total);
    EXPECT_EQ(statistics.delivered, total);
    EXPECT_EQ(statistics.discarded + statistics.failed + statistics.waiting, 0U);
    for (std::size_t logger = 0; logger < PRODUCERS; ++logger) {
        loggerOf(logger).removeAppender(&logging);
    }
}

INSTANTIATE_TEST_SUITE_P(LoggingFromInsideAndNot, ReloadStorm, Bool());
