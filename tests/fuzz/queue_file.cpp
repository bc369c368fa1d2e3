// Reads what may be a queue file: the input as it is, or records of it whose checks are right.

#include "Expect.h"

#include "log/LogMessage.h"
#include "log/queuefile/QueueFileChecks.h"
#include "log/queuefile/StoredQueue.h"

#include <algorithm>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::Log::QueueFileFormat;

namespace {

/// A file of some blocks, which hold whatever the input says, as if a writer had meant it.
std::string makeFile(FuzzedDataProvider& input) {
    std::string bytes(8 * SLOT, '\0');
    Head head = {};
    std::memcpy(head.magic, MAGIC, sizeof head.magic);
    head.version = VERSION;
    head.byteOrder = BYTE_ORDER_MARK;
    head.sizeOfAddress = sizeof(void*);
    head.sizeOfSlot = SLOT;
    head.sizeOfFile = bytes.size();
    head.check = checkOf(head);
    std::memcpy(bytes.data(), &head, sizeof head);
    for (std::size_t slot = 1; slot < 8 && input.remaining_bytes() > 0; ++slot) {
        const auto kind = input.ConsumeIntegralInRange<std::uint32_t>(MESSAGES, FREED);
        const std::uint64_t word = blockWord(kind, 1, input.ConsumeIntegral<std::uint8_t>());
        char* const block = bytes.data() + slot * SLOT;
        std::memcpy(block, &word, sizeof word);
        std::size_t place = BODY;
        while (place + 2 * sizeof(Frame) < SLOT && input.ConsumeBool()) {
            const std::string payload =
                input.ConsumeRandomLengthString(SLOT - place - 2 * sizeof(Frame)).substr(0, SLOT);
            std::memcpy(block + place + sizeof(Frame), payload.data(), payload.size());
            const std::uint64_t record = frameWord(input.ConsumeIntegralInRange<std::uint32_t>(1, 3),
                                                   payload.size(), input.ConsumeBool());
            if (kind == MARKS) {
                Mark mark = {record, input.ConsumeIntegralInRange<std::uint64_t>(0, 4), 0,
                             input.ConsumeIntegral<std::uint8_t>(), 0};
                mark.check = checkOf(mark);
                mark.inverse = input.ConsumeBool() ? ~mark.number : 0;
                std::memcpy(block + place, &mark, sizeof mark);
                place += sizeof mark;
                continue;
            }
            writeFrame(word, block + place, record, payload,
                       place + recordSize(payload.size()) + sizeof(Frame) > SLOT);
            place += recordSize(payload.size());
        }
    }
    return bytes;
}

/// A width of the format may want more memory than there is.
bool mayBeRendered(const MessageFields& message) {
    return message.form != TextForm::FORMATTED || message.place->format.find(':') == std::string_view::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::string bytes = input.ConsumeBool() ? makeFile(input) : input.ConsumeRemainingBytesAsString();
    const StoredQueue queue(bytes);
    for (const StoredQueue::Message& message : queue.messages()) {
        EXPECT(message.run->isWaiting(message.number));
        if (mayBeRendered(message.fields)) {
            const LogMessage made = message.fields.makeMessage();
            EXPECT(made.getText().size() >= made.getMessage().size());
            static_cast<void>(made.getValues());
            static_cast<void>(made.getContext());
        }
    }
    return 0;
}
