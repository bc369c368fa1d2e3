#include "TestSupport.h"

#include "log/LogException.h"
#include "log/async/Ring.h"
#include "log/queuefile/QueueFile.h"
#include "log/queuefile/StoredQueue.h"

#include <cstdlib>
#include <random>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

/// A queue file left by a killed process.
class LeftQueue : public Test {
protected:
    static constexpr std::uint64_t SIZE = 64 * 1024;
    static constexpr std::uint64_t COUNT = 60;

    static std::string textOf(std::uint64_t number) {
        return "text " + std::to_string(number) + std::string(40 + number * 7 % 100, '.');
    }

    void append(QueueFile& file, std::uint64_t first, std::uint64_t last, std::uint64_t done = 0) {
        BlockPool pool;
        Ring ring(pool);
        for (std::uint64_t number = first; number <= last; ++number) {
            const std::string text = textOf(number);
            const MessageFields fields(loggers_[number % 2],
                                       Util::TimeUtils::Time(number, Util::TimeUtils::SEC), Level::LEVEL_INFO,
                                       text, 8, "app.cpp", LOG);
            ring.append(ring.reserve(fields, 0, number, &file).value(), number);
        }
        file.mark(QueueFileFormat::DONE).set(done);
        bytes_ = readBinary(path_); // before the ring returns its blocks
        places_.clear();
        for (std::uint64_t number = 0; number <= COUNT; ++number) {
            places_.push_back(bytes_.find(textOf(number)));
        }
    }

    static std::string readBinary(const std::string& path) {
        std::ostringstream content;
        content << std::ifstream(path, std::ios::binary).rdbuf();
        return content.str();
    }

    /// Expects that a damaged file has all messages except the damaged ones, complete and in order.
    void expectAllBut(const std::string& bytes, std::size_t damage, std::size_t end,
                      const std::string& what) const {
        const StoredQueue queue(bytes);
        auto message = queue.messages().begin();
        std::uint64_t last = 0;
        for (; message != queue.messages().end(); ++message) {
            const std::uint64_t number = message->number;
            ASSERT_LE(number, COUNT) << what;
            ASSERT_GT(number, last) << what;
            expectUntouched(last + 1, number, damage, end, what);
            last = number;
            ASSERT_EQ(message->fields.text, textOf(number)) << what;
            ASSERT_EQ(message->fields.loggerName, loggers_[number % 2]) << what;
        }
        expectUntouched(last + 1, COUNT + 1, damage, end, what);
    }

    /// Expects that all of these messages, which are missing, were damaged.
    void expectUntouched(std::uint64_t first, std::uint64_t behind, std::size_t damage, std::size_t end,
                         const std::string& what) const {
        constexpr std::size_t HEAD = 120; // size of a record before its text
        for (std::uint64_t number = std::max(first, DONE + 1); number < behind; ++number) {
            const std::size_t place = places_[number];
            const std::size_t behindText = place + textOf(number).size();
            ASSERT_TRUE(damage < behindText && end > place - HEAD) << what << ": " << number << " is missing";
        }
    }

    static constexpr std::uint64_t DONE = 5;
    const TemporaryDirectory directory_;
    const std::string path_ = directory_ / "queue";
    const std::string loggers_[2] = {"net.tcp", "net.udp"};
    std::string bytes_;
    std::vector<std::size_t> places_; ///< of the texts in it
};

} // namespace

TEST_F(LeftQueue, HasAllThatWaitsWithItsNames) {
    QueueFile file(path_, SIZE);
    append(file, 1, COUNT, DONE);
    const StoredQueue queue(bytes_);
    EXPECT_EQ(queue.problem(), "");
    ASSERT_EQ(queue.messages().size(), COUNT - DONE);
    EXPECT_EQ(queue.messages().front().number, DONE + 1);
    EXPECT_GT(queue.messages().front().run->processId, 0);
    EXPECT_NE(queue.messages().front().run->program, "");
    expectAllBut(bytes_, 0, 0, "whole");
}

TEST_F(LeftQueue, IsReadUpToWhereItWasCut) {
    QueueFile file(path_, SIZE);
    append(file, 1, COUNT, DONE);
    const bool isNight = std::getenv("ZAV_LOG_FLIPS") != nullptr;
    for (std::size_t size = 0; size < bytes_.size(); size += isNight || size < 2000 ? 1 : 13) {
        if (size < StoredQueue::BEGINNING) {
            ASSERT_EQ(StoredQueue(bytes_.substr(0, size)).problem(), "It is not a queue file");
        } else if (size >= sizeof(QueueFileFormat::Head)) {
            ASSERT_NE(StoredQueue(bytes_.substr(0, size)).problem(), "");
            ASSERT_NO_FATAL_FAILURE(
                expectAllBut(bytes_.substr(0, size), size, bytes_.size(), "cut at " + std::to_string(size)));
        }
    }
}

TEST_F(LeftQueue, LosesOnlyWhatADamagedByteIsIn) {
    QueueFile file(path_, SIZE);
    append(file, 1, COUNT, DONE);
    const char* const wanted = std::getenv("ZAV_LOG_FLIPS"); // more in scripts/nightly
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    const std::size_t used = bytes_.rfind(textOf(COUNT)) + 1000;
    for (int flip = wanted != nullptr ? std::atoi(wanted) : 1000; flip > 0; --flip) {
        const std::size_t place =
            StoredQueue::BEGINNING +
            random() % ((flip % 10 == 0 ? bytes_.size() : used) - StoredQueue::BEGINNING);
        std::string damaged = bytes_;
        damaged[place] = static_cast<char>(damaged[place] ^ static_cast<char>(1 + random() % 255));
        ASSERT_NO_FATAL_FAILURE(expectAllBut(
            damaged, place, place + 1, "seed " + std::to_string(seed) + ", byte " + std::to_string(place)));
    }
}

TEST_F(LeftQueue, DoesNotTakeOldRecordsInReusedMemoryForItsOwn) {
    { // A run whose messages are dropped, and one that drops them and is killed after a message.
        QueueFile file(path_, SIZE);
        append(file, 1, COUNT);
    }
    writeFile(path_, bytes_); // as before the ring returned its blocks
    {
        QueueFile file(path_, SIZE);
        file.forgetEarlier();
        append(file, 1, 1);
    }
    writeFile(path_, bytes_);
    QueueFile file(path_, SIZE);
    EXPECT_EQ(file.earlier()->problem(), "");
    ASSERT_EQ(file.earlier()->messages().size(), 1U);
    EXPECT_EQ(file.earlier()->messages().front().fields.text, textOf(1));
}

/// A file is made under another name first.
TEST(QueueFile, IsMadeInPlaceOfAnUnfinishedOneAndOfNothingElse) {
    const TemporaryDirectory directory;
    const std::string path = directory / "queue";
    writeFile(path + ".new", "notes of a user");
    try {
        const QueueFile file(path, 64 * 1024);
        FAIL() << "the user's file is gone";
    } catch (const LogException& exception) {
        EXPECT_THAT(exception.what(), HasSubstr(path + ".new: It is in the way"));
    }
    EXPECT_EQ(readFile(path + ".new"), "notes of a user");
    EXPECT_FALSE(fileExists(path));

    writeFile(path + ".new", std::string(1000, '\0')); // left by a process that was killed
    const QueueFile file(path, 64 * 1024);
    EXPECT_FALSE(fileExists(path + ".new"));
    EXPECT_EQ(std::filesystem::file_size(path), 64 * 1024U);
}
