#include "AcceptanceSupport.h"

#include "log/LogFormat.h"
#include "log/LogMacros.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;

namespace {

constexpr int PRODUCERS = 4;
constexpr int MESSAGES = 5000; ///< of each producer per round

const std::string LIMITS[] = {"maxQueueSize = -1", "maxQueueSize = 64",
                              "maxQueueSize = 64\nzav.log.AsynchronousDispatcher.overflow = block"};

/// What has arrived from one producer.
struct Came {
    int last = 0;
    int count = 0;
    std::int64_t sum = 0;
};
using CameOfAll = std::array<Came, PRODUCERS>;

/// Counts the end of a line, "PRODUCER:NUMBER".
void add(CameOfAll& came, const std::string& text) {
    int producer = 0;
    int number = 0;
    ASSERT_EQ(std::sscanf(text.c_str() + text.rfind(' ') + 1, "%d:%d", &producer, &number), 2) << text;
    Came& ofOne = came.at(static_cast<std::size_t>(producer));
    ASSERT_GT(number, ofOne.last) << text;
    ofOne.last = number;
    ++ofOne.count;
    ofOne.sum += number;
}

void logFrom(int producer) {
    Logger& logger = LoggerFactory::getLogger(producer % 2 == 0 ? "net" : "net.tcp");
    for (int number = 1; number <= MESSAGES; ++number) {
        switch (number % 3) {
        case 0:
            ZAV_LOGF_AUDIT(logger, "format {}:{}", producer, number);
            break;
        case 1:
            ZAV_LOG_AUDIT(logger, "stream " << producer << ':' << number);
            break;
        default:
            logger.audit("text " + std::to_string(producer) + ":" + std::to_string(number));
        }
    }
}

class Soak : public Application {
protected:
    static int rounds() {
        const char* const messages = std::getenv("ZAV_LOG_SOAK"); // set by scripts/nightly
        return messages == nullptr ? 3 : std::atoi(messages) / (PRODUCERS * MESSAGES);
    }

    Soak() {
        LoggerFactory::getRootLogger().addAppender(&appender_);
        LogManager::addAsynchronousAppender(&appender_);
    }
    ~Soak() override {
        LogManager::removeAsynchronousAppender(&appender_);
        LoggerFactory::getRootLogger().removeAppender(&appender_);
    }

    /// \param shown what was written to standard error
    void expectAllOnce(const std::string& shown) {
        CameOfAll discarded = {};
        for (const std::string& line : linesIn(shown, 0)) {
            ASSERT_EQ(line.find("Message queue size reached. Discarding oldest log message: "), 0U) << line;
            add(discarded, line);
        }
        for (std::size_t producer = 0; producer < PRODUCERS; ++producer) {
            EXPECT_EQ(delivered_[producer].count + discarded[producer].count, MESSAGES);
            EXPECT_EQ(delivered_[producer].sum + discarded[producer].sum,
                      std::int64_t{MESSAGES} * (MESSAGES + 1) / 2);
        }
        delivered_ = {};
    }

    CameOfAll delivered_ = {};
    CallingAppender appender_{[this](const LogMessage& message) { add(delivered_, message.getText()); },
                              false};
};

} // namespace

TEST_F(Soak, EveryMessageIsDeliveredOrShownOnceInItsOrder) {
    for (int round = 0; round < rounds() && !HasFailure(); ++round) {
        StandardErrorCapture errors;
        ASSERT_TRUE(init("zav.log.AsynchronousDispatcher." + LIMITS[round % 3] + "\n"));
        const LogStatistics before = LogManager::statistics();
        inThreads(PRODUCERS, logFrom);
        LogManager::finish();
        const LogStatistics after = LogManager::statistics();
        EXPECT_EQ(after.waiting, 0U);
        EXPECT_EQ(after.queued - before.queued, std::uint64_t{PRODUCERS} * MESSAGES);
        expectAllOnce(errors.text());
    }
}
