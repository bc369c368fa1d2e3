#include "TestSupport.h"

#include "inputs/QueueLines.h"
#include "log/async/MessageStore.h"

#include <atomic>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;

namespace {

/// Appends and takes out until it is told to end; what is taken out makes room for what comes.
void write(MessageStore& store, const std::atomic<bool>& isOver) {
    MessageBatch batch;
    for (std::uint64_t number = 1; !isOver; ++number) {
        const std::string text = std::string(1 + number % 100, 'x') + ' ' + std::to_string(number);
        store.append(MessageFields("net.tcp", Util::TimeUtils::Time(number, Util::TimeUtils::SEC),
                                   Level::LEVEL_INFO, text, 8, "app.cpp", LOG));
        if (store.size() == 300) {
            store.take(batch);
            for (batch.rewind(); batch.hasNext();) {
                batch.next();
            }
            store.release(batch, true);
        }
    }
}

/// Expects numbers without a gap.
void expectInOrder(const std::string& text) {
    std::uint64_t last = 0;
    for (const std::string& line : linesIn(text)) {
        const std::uint64_t number = std::stoull(line.substr(line.rfind(' ') + 1));
        EXPECT_TRUE(last == 0 || number == last + 1) << number << " follows " << last;
        last = number;
    }
}

} // namespace

TEST(QueueLines, AreWholeAndInOrderWhileTheFileIsInUse) {
    const TemporaryDirectory directory;
    QueueFile file(directory / "queue", 512 * 1024);
    MessageStore store;
    store.keepIn(&file);
    std::atomic<bool> isOver{false};
    std::thread writer([&] { write(store, isOver); });
    std::size_t seen = 0;
    for (int look = 0; (look < 100 || seen == 0) && !testing::Test::HasFailure(); ++look) {
        Platform::InputFile input;
        std::string problem;
        EXPECT_TRUE(input.open(directory / "queue", problem)) << problem;
        const Tools::QueueLines lines(input);
        EXPECT_EQ(lines.problem, "");
        expectInOrder(lines.text);
        seen += lines.text.size();
    }
    isOver = true;
    writer.join();
}
