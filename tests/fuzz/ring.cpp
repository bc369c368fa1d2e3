// Appends, takes out, keeps and reads, as the input says, and compares with a queue that is too simple to be
// wrong.

#include "Expect.h"

#include "log/async/Ring.h"

#include <deque>
#include <fuzzer/FuzzedDataProvider.h>
#include <memory>

using namespace ZAV;
using namespace ZAV::Log;

namespace {

struct Numbered {
    std::uint64_t number;
    std::shared_ptr<const LogMessage> message;
    const KnownPlace* place;
    std::string values;
    std::string context;
    std::uint64_t thread;
};

struct Queue {
    BlockPool pool;
    Ring ring{pool};
    std::deque<Numbered> model;
    std::uint64_t lastNumber = 0;

    // While a delivery lasts.
    bool isKept = false;
    Ring::Cursor begin;
    std::deque<Numbered> kept;
};

bool areEqual(const MessageFields& a, const Numbered& expected) {
    const MessageFields b(*expected.message);
    return a.loggerName == b.loggerName && a.time == b.time && a.level == b.level && a.text == b.text &&
           a.line == b.line && a.type == b.type && a.place == expected.place &&
           a.file == (a.place == nullptr ? b.file : a.place->file) && a.values == expected.values &&
           a.context == expected.context && a.thread == expected.thread;
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
    const auto made = std::make_shared<const LogMessage>(makeMessage(input, loggerName));
    MessageFields message(*made);
    message.loggerName = loggerName;
    if (input.ConsumeBool()) {
        const std::string format(1, input.PickValueInArray({'a', 'b'}));
        message.place = &knownPlace({made->getFile().substr(0, 2), format, 1, Level::LEVEL_INFO});
        message.file = message.place->file;
    }
    const std::string values = input.ConsumeBool() ? std::string() : input.ConsumeRandomLengthString();
    const std::string context = input.PickValueInArray({"", "a", "another one"});
    message.values = values;
    message.context = context;
    message.thread = input.ConsumeIntegralInRange<std::uint64_t>(0, 2);
    const PackedMessage packed = *queue.ring.reserve(message, 0, queue.lastNumber);
    queue.lastNumber += input.ConsumeBool() ? 1 : input.ConsumeIntegral<std::uint32_t>() / 2 + 1;
    queue.ring.append(packed, queue.lastNumber);
    queue.model.push_back({queue.lastNumber, made, message.place, values, context, message.thread});
}

void takeOut(Queue& queue, std::size_t count) {
    for (; count > 0 && !queue.model.empty(); --count) {
        queue.model.pop_front();
    }
    const bool isThere =
        queue.ring.findFront(queue.model.empty() ? queue.lastNumber + 1 : queue.model.front().number);
    EXPECT(isThere == !queue.model.empty());
    EXPECT(!isThere || queue.ring.front().nextNumber() == queue.model.front().number);
}

/// \return the cursor at the end of what is kept
Ring::Cursor compareKept(const Queue& queue) {
    Ring::Cursor cursor = queue.begin;
    for (const Numbered& expected : queue.kept) {
        EXPECT(cursor.findNext(queue.ring.lastKept()));
        EXPECT(cursor.nextNumber() == expected.number);
        const PackedMessage::Unpacked message = cursor.next();
        EXPECT(message.number == expected.number);
        EXPECT(areEqual(message.fields, expected));
    }
    return cursor;
}

void keepOrRelease(Queue& queue) {
    if (queue.isKept) {
        queue.ring.release(compareKept(queue));
        while (!queue.model.empty() && !queue.kept.empty() &&
               queue.model.front().number <= queue.kept.back().number) {
            queue.model.pop_front(); // what was read is taken out
        }
        queue.kept.clear();
    } else {
        takeOut(queue, 0);
        queue.ring.keep();
        queue.begin = queue.ring.front();
        queue.kept.assign(queue.model.begin(), queue.model.end());
    }
    queue.isKept = !queue.isKept;
    takeOut(queue, 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Queue queue;
    while (input.remaining_bytes() > 0) {
        switch (input.ConsumeIntegralInRange(0, 5)) {
        case 0:
        case 1:
        case 2:
            append(queue, input);
            break;
        case 3:
            takeOut(queue, input.ConsumeIntegralInRange<std::size_t>(1, 40));
            break;
        case 4:
            keepOrRelease(queue);
            break;
        default:
            compareKept(queue);
            break;
        }
    }
    compareKept(queue);
    return 0;
}
