// Appends, takes out, reads and swaps, as the input says, and compares with a queue that is too simple to be
// wrong.

#include "Expect.h"

#include "log/async/MessageBatch.h"

#include <deque>
#include <fuzzer/FuzzedDataProvider.h>

using namespace ZAV;
using namespace ZAV::Log;

namespace {

struct Queue {
    MessageBatch batch;
    std::deque<LogMessage> model;
};

bool areEqual(const MessageFields& a, const MessageFields& b) {
    return a.loggerName == b.loggerName && a.time == b.time && a.level == b.level && a.text == b.text &&
           a.line == b.line && a.file == b.file && a.type == b.type;
}

/// A few bytes of input make a long text, so that blocks of every size are filled.
std::string makeText(FuzzedDataProvider& input) {
    const auto length = input.ConsumeIntegralInRange<std::size_t>(0, 70'000);
    std::string text = input.ConsumeRandomLengthString();
    text.resize(length, text.empty() ? '\0' : text.back());
    return text;
}

LogMessage makeMessage(FuzzedDataProvider& input, std::string_view loggerName) {
    const Util::TimeUtils::Time time(input.ConsumeIntegral<std::uint8_t>(), Util::TimeUtils::MSEC);
    const auto level = input.PickValueInArray({Level::LEVEL_TRACE, Level::LEVEL_INFO, Level::LEVEL_AUDIT});
    std::string text = input.ConsumeBool() ? makeText(input) : input.ConsumeRandomLengthString();
    const int line = input.ConsumeIntegral<int>();
    std::string file = input.ConsumeBool() ? "the same.cpp" : input.ConsumeRandomLengthString();
    return LogMessage(std::string(loggerName), time, level, std::move(text), line, std::move(file),
                      input.PickValueInArray({LOG, CFG}));
}

void append(Queue& queue, FuzzedDataProvider& input) {
    const std::string_view loggerName = input.PickValueInArray({"root", "net.tcp", ""}); // which stays
    queue.model.push_back(makeMessage(input, loggerName));
    MessageFields message(queue.model.back());
    message.loggerName = loggerName;
    queue.batch.append(message);
}

void removeFront(Queue& queue) {
    if (!queue.model.empty()) {
        EXPECT(areEqual(queue.batch.front(), queue.model.front()));
        queue.batch.removeFront();
        queue.model.pop_front();
    }
}

void compare(const Queue& queue) {
    EXPECT(queue.batch.size() == queue.model.size());
    MessageBatch::Reader messages(queue.batch);
    for (const LogMessage& expected : queue.model) {
        EXPECT(messages.hasNext());
        EXPECT(areEqual(messages.next(), expected));
    }
    EXPECT(!messages.hasNext());
}

void swap(Queue& a, Queue& b) {
    a.batch.swap(b.batch);
    a.model.swap(b.model);
}

void recycle(Queue& queue, MessageBatch& other) {
    MessageBlocks blocks = queue.batch.takeBlocks();
    other.addSpares(blocks);
    queue.model.clear();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Queue queue;
    Queue other;
    while (input.remaining_bytes() > 0) {
        switch (input.ConsumeIntegralInRange(0, 5)) {
        case 0:
        case 1:
            append(queue, input);
            break;
        case 2:
            removeFront(queue);
            break;
        case 3:
            compare(queue);
            break;
        case 4:
            recycle(queue, other.batch);
            break;
        default:
            swap(queue, other);
            break;
        }
    }
    compare(queue);
    compare(other);
    return 0;
}
