#include "TestSupport.h"

#include "log/async/MessageBatch.h"

#include <gmock/gmock.h>

using namespace ZAV;
using namespace ZAV::Log;
using testing::ElementsAre;

namespace {

std::vector<std::string> textsOf(const MessageBatch& batch) {
    std::vector<std::string> texts;
    for (MessageBatch::Reader messages(batch); messages.hasNext();) {
        texts.push_back(messages.next().getText());
    }
    return texts;
}

} // namespace

TEST(MessageBatch, GivesEveryFieldBack) {
    const std::string text("two\nlines and a zero \0 byte", 27);
    MessageBatch batch;
    batch.append(LogMessage("net.tcp", Util::TimeUtils::Time(1, Util::TimeUtils::DAY), Level::TRACE, text, -7,
                            "", CFG));
    batch.append(LogMessage("", Util::TimeUtils::Time(), Level::AUDIT, "", 120, "Socket.cpp", LOG));
    MessageBatch::Reader messages(batch);
    const LogMessage first = messages.next();
    EXPECT_EQ(first.getLoggerName(), "net.tcp");
    EXPECT_EQ(first.getTime(), Util::TimeUtils::Time(1, Util::TimeUtils::DAY));
    EXPECT_EQ(first.getLevel(), Level::TRACE);
    EXPECT_EQ(first.getText(), text);
    EXPECT_EQ(first.getLine(), -7);
    EXPECT_EQ(first.getFile(), "");
    EXPECT_EQ(first.getType(), CFG);
    const LogMessage second = messages.next();
    EXPECT_EQ(second.getLoggerName(), "");
    EXPECT_EQ(second.getLine(), 120);
    EXPECT_EQ(second.getFile(), "Socket.cpp");
    EXPECT_FALSE(messages.hasNext());
}

TEST(MessageBatch, KeepsTheOrderAcrossBlocksOfAnySize) {
    MessageBatch batch;
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < 300; ++i) {
        expected.push_back(std::string(i % 50 == 49 ? 100'000 : i * 3, static_cast<char>('a' + i % 26)));
        batch.append(TestSupport::makeMessage(expected.back()));
    }
    EXPECT_EQ(textsOf(batch), expected);
    for (std::size_t i = 0; i < 200; ++i) {
        EXPECT_EQ(batch.front().getText(), expected[i]);
        batch.removeFront();
    }
    expected.erase(expected.begin(), expected.begin() + 200);
    EXPECT_EQ(textsOf(batch), expected);
    MessageBatch other;
    other.append(TestSupport::makeMessage("other"));
    other.swap(batch);
    EXPECT_EQ(textsOf(other), expected);
    EXPECT_THAT(textsOf(batch), ElementsAre("other"));
    batch.removeFront();
    EXPECT_EQ(batch.size(), 0U);
    batch.append(TestSupport::makeMessage("again"));
    EXPECT_THAT(textsOf(batch), ElementsAre("again"));
}
