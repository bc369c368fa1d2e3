#include "AcceptanceSupport.h"

#include <algorithm>
#include <atomic>

using namespace ZAV;
using namespace ZAV::Log;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::inThreads;
using TestSupport::StandardErrorCapture;

namespace {

constexpr int PRODUCERS = 8;
constexpr int MESSAGES = 1500; ///< of each producer
constexpr int FILES = 10;      ///< of a file appender

const char* const LOGGERS[] = {"net", "net.tcp", "db", "db.table"}; ///< two producers share each

/// Counts the messages that any threads write to it.
class CountingAppender : public Appender {
public:
    CountingAppender() : Appender("counting") {}
    std::atomic<int> count{0};

protected:
    void doOutput(const LogMessage&) override { ++count; }
};

class CountingListener : public CommandListener {
public:
    void onCommand(const std::string&) override { ++count; }
    std::atomic<int> count{0};
};

/// Keeps the thread that reports a failure until the producers have logged a number of messages.
class HoldingListener : public CommandListener {
public:
    HoldingListener(const std::atomic<int>& logged, int awaited) : logged_(logged), awaited_(awaited) {}

    void onCommand(const std::string&) override {
        while (logged_ < awaited_) {
            std::this_thread::yield();
        }
    }

private:
    const std::atomic<int>& logged_;
    const int awaited_;
};

/// The text of each line that a producer logged, such as "producer:3:1017".
std::vector<std::string> producedIn(const std::string& text) {
    std::vector<std::string> words = TestSupport::lastWordsIn(text);
    const auto isOther = [](const std::string& word) { return word.find("producer:") != 0; };
    words.erase(std::remove_if(words.begin(), words.end(), isOther), words.end());
    return words;
}

std::string textOf(int producer, int number) {
    return "producer:" + std::to_string(producer) + ":" + std::to_string(number);
}

int producerOf(const std::string& text) {
    return std::stoi(text.substr(text.find(':') + 1));
}

int numberOf(const std::string& text) {
    return std::stoi(text.substr(text.rfind(':') + 1));
}

/// The numbers of each producer's messages, in the order of the texts.
std::vector<std::vector<int>> numbersByProducer(const std::vector<std::string>& texts) {
    std::vector<std::vector<int>> numbers(PRODUCERS);
    for (const std::string& text : texts) {
        numbers.at(static_cast<std::size_t>(producerOf(text))).push_back(numberOf(text));
    }
    return numbers;
}

void expectProducersOrder(const std::vector<std::string>& texts) {
    for (const std::vector<int>& numbers : numbersByProducer(texts)) {
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    }
}

/// Every message of every producer must be there once, in any order.
void expectEachOnce(const std::vector<std::string>& texts) {
    for (std::vector<int>& numbers : numbersByProducer(texts)) {
        std::sort(numbers.begin(), numbers.end());
        ASSERT_THAT(numbers, SizeIs(MESSAGES));
        for (int number = 0; number < MESSAGES; ++number) {
            ASSERT_EQ(numbers[static_cast<std::size_t>(number)], number);
        }
    }
}

class Stress : public TestSupport::Application {
protected:
    bool initWith(const std::string& queue) {
        return init("appender.sync = FileAppender\n"
                    "appender.sync.dir = DIR\n"
                    "appender.sync.fileNumber = 9\n"
                    "appender.sync.fileMaxSize = 200\n"
                    "appender.sync.fileMaxSizeUnit = KB\n"
                    "appender.broken = SimpleFileAppender\n"
                    "appender.broken.asynchronous = true\n"
                    "appender.broken.filters = broken\n"
                    "appender.broken.dir = DIR/missing\n"
                    "appender.async = FileAppender\n"
                    "appender.async.asynchronous = true\n"
                    "appender.async.dir = DIR\n"
                    "appender.async.fileNumber = 9\n"
                    "appender.async.fileMaxSize = 200\n"
                    "appender.async.fileMaxSizeUnit = KB\n"
                    "appender.filtered = SimpleFileAppender\n"
                    "appender.filtered.asynchronous = true\n"
                    "appender.filtered.filters = net\n"
                    "appender.filtered.level = ERROR\n"
                    "appender.filtered.expiration = 1 hour\n"
                    "appender.filtered.dir = DIR\n" +
                    queue);
    }

    /// What the producers wrote to a series of files, oldest first.
    std::vector<std::string> producedInSeries(const std::string& name) const {
        std::string text;
        for (int index = FILES - 1; index >= 0; --index) {
            text += TestSupport::readFile(directory_ / (name + std::to_string(index)));
        }
        return producedIn(text);
    }

    /// Logs from all producers at once, and meanwhile changes whatever may change.
    void logWhileAllChanges();

    /// Has the consumer thread of a new `init` write what the last `finish` left in the queue.
    void writeTheRest(const std::string& queue) {
        ASSERT_TRUE(initWith(queue));
        LogManager::finish();
    }

    /// \param shown what the producers' messages on the standard error stream were
    void expectEachWrittenOrShown(const std::vector<std::string>& shown) const;

    std::atomic<int> logged_{0};

private:
    void produce(int producer);
    void changeLevels() const;
    void createLoggers() const;
    void addAndRemoveAppender() const;
    void issueCommands() const;

    std::atomic<bool> ended_{false};
};

void Stress::produce(int producer) {
    Logger& logger = LoggerFactory::getLogger(LOGGERS[producer % 4]);
    for (int number = 0; number < MESSAGES; ++number) {
        logger.audit(textOf(producer, number), 0, "");
        ++logged_;
    }
}

void Stress::changeLevels() const {
    const Level::LogLevel levels[] = {Level::LEVEL_AUDIT, Level::LEVEL_WARNING, Level::LEVEL_TRACE};
    for (int i = 0; !ended_; ++i) {
        LoggerFactory::getLogger(LOGGERS[i % 4]).setLevel(levels[i % 3], i % 2 == 0);
        LoggerFactory::getRootLogger().setLevel(levels[(i + 1) % 3], false);
        std::this_thread::yield();
    }
}

/// Looks them up again once there are many.
void Stress::createLoggers() const {
    for (int i = 0; !ended_; ++i) {
        LoggerFactory::getLogger(LOGGERS[i % 4] + (".made" + std::to_string(i % 400))).audit("other", 0, "");
        std::this_thread::yield();
    }
}

void Stress::addAndRemoveAppender() const {
    CountingAppender appender;
    const auto logThrough = [&appender](Logger& logger) {
        logger.addAppender(&appender);
        logger.audit("other", 0, "");
        logger.removeAppender(&appender);
    };
    int rounds = 0;
    while (!ended_) {
        logThrough(LoggerFactory::getRootLogger());
        logThrough(LoggerFactory::getLogger("net"));
        rounds += 2;
        std::this_thread::yield();
    }
    EXPECT_GE(appender.count, rounds);
}

void Stress::issueCommands() const {
    CountingListener listener;
    int rounds = 0;
    while (!ended_) {
        LogManager::registerCommandListener("stress", &listener);
        LogManager::command("stress", "");
        LogManager::command("DynamicLogLevelFilterSoft", "DEBUG");
        LogManager::unregisterCommandListener("stress");
        ++rounds;
        std::this_thread::yield();
    }
    EXPECT_EQ(listener.count, rounds);
}

void Stress::logWhileAllChanges() {
    std::vector<std::thread> others;
    for (const auto change : {&Stress::changeLevels, &Stress::createLoggers, &Stress::addAndRemoveAppender,
                              &Stress::issueCommands}) {
        others.emplace_back(change, this);
    }
    inThreads(PRODUCERS, [this](int producer) { produce(producer); });
    ended_ = true;
    for (std::thread& other : others) {
        other.join();
    }
}

void Stress::expectEachWrittenOrShown(const std::vector<std::string>& shown) const {
    const std::vector<std::string> synchronous = producedInSeries("sync");
    expectProducersOrder(synchronous);
    expectEachOnce(synchronous);

    std::vector<std::string> asynchronous = producedInSeries("async");
    expectProducersOrder(asynchronous);
    expectProducersOrder(shown);
    std::vector<std::string> ofNet;
    std::copy_if(asynchronous.begin(), asynchronous.end(), std::back_inserter(ofNet),
                 [](const std::string& text) { return producerOf(text) % 4 < 2; });
    EXPECT_EQ(producedIn(TestSupport::readFile(directory_ / "filtered")), ofNet);

    asynchronous.insert(asynchronous.end(), shown.begin(), shown.end());
    expectEachOnce(asynchronous);
}

} // namespace

TEST_F(Stress, AnUnboundedQueueDeliversEveryMessageOnce) {
    // With prompt delivery the second consumer would write the rest to the first appender that joins it.
    const std::string queue = "zav.log.AsynchronousDispatcher.maxQueueSize = -1\n"
                              "zav.log.AsynchronousDispatcher.waitingPeriod = 1\n";
    StandardErrorCapture errors;
    ASSERT_TRUE(initWith(queue));
    logWhileAllChanges();
    LogManager::finish();
    writeTheRest(queue);
    EXPECT_THAT(errors.text(), IsEmpty());
    expectEachWrittenOrShown({});
}

TEST_F(Stress, ASmallQueueDeliversOrShowsEveryMessageOnce) {
    const int queueSize = 64;
    const std::string queue = "zav.log.AsynchronousDispatcher.maxQueueSize = 64\n"
                              "zav.log.AsynchronousDispatcher.waitingPeriod = 1\n";
    HoldingListener listener(logged_, 10 * queueSize); // so that the queue overflows in any case
    StandardErrorCapture errors;
    ASSERT_TRUE(initWith(queue));
    LogManager::registerCommandListener("EXCEPTION", &listener);
    LoggerFactory::getLogger("broken").audit("broken", 0, "");
    logWhileAllChanges();
    LogManager::finish();
    writeTheRest(queue);

    const std::string text = errors.text();
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        ASSERT_EQ(line.find("Message queue size reached. Discarding oldest log message: "), 0U) << line;
    }
    const std::vector<std::string> shown = producedIn(text);
    EXPECT_THAT(shown, testing::Not(IsEmpty()));
    expectEachWrittenOrShown(shown);
}
