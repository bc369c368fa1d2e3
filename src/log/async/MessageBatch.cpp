#include "log/async/MessageBatch.h"

#include <thread>

namespace ZAV {
namespace Log {

/// Forgets what the batch held, but not the memory for it.
void MessageBatch::begin(std::uint64_t first, std::uint64_t last) noexcept {
    first_ = number_ = first;
    last_ = last;
    streams_.clear();
    stream_ = 0;
    given_ = 0;
}

void MessageBatch::rewind() noexcept {
    for (Stream& stream : streams_) {
        stream.cursor = stream.begin;
        stream.nextNumber = 0;
    }
    number_ = first_;
    lookForMore();
}

/// The numbers have no gaps, so the ring with the next one is looked for. It is missing only while its thread
/// is between taking the number and publishing the message, where it waits for nothing.
PackedMessage::Unpacked MessageBatch::next() noexcept {
    std::size_t looked = 0;
    while (streams_[stream_].nextNumber != number_) {
        stream_ = stream_ + 1 == streams_.size() ? 0 : stream_ + 1;
        if (++looked % streams_.size() == 0) {
            lookForMore();
            std::this_thread::yield();
        }
    }
    Stream& stream = streams_[stream_];
    const PackedMessage::Unpacked message = stream.cursor.next();
    stream.nextNumber = stream.cursor.findNext(stream.end) ? stream.cursor.nextNumber() : 0;
    ++number_;
    return message;
}

void MessageBatch::copyRestTo(MessageBatch& rest) const {
    rest.begin(first_, last_);
    for (const Stream& stream : streams_) {
        rest.streams_.push_back({stream.ring, stream.end, stream.begin, stream.begin, 0});
    }
    rest.rewind();
    for (std::uint64_t given = given_; given > 0; --given) {
        rest.next();
    }
}

void MessageBatch::lookForMore() noexcept {
    for (Stream& stream : streams_) {
        if (stream.nextNumber == 0 && stream.cursor.findNext(stream.end)) {
            stream.nextNumber = stream.cursor.nextNumber();
        }
    }
}

} // namespace Log
} // namespace ZAV
