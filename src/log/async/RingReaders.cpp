// Reading what threads have appended to their rings, and taking it out.

#include "log/async/Ring.h"

#include <thread>

namespace ZAV {
namespace Log {

/// The last message of a block is published before the next block is linked, so `published` must be read
/// again once a link was seen.
bool Ring::Cursor::findNext(const MessageBlock* last) noexcept {
    while (!isAtMessage()) {
        MessageBlock* const next = block_ == last ? nullptr : block_->next.load(std::memory_order_acquire);
        if (next == nullptr) {
            return false;
        }
        if (!isAtMessage()) {
            *this = Cursor(next, passed_);
        }
    }
    return true;
}

/// Skips notes, each of which is followed by a message.
bool Ring::Cursor::isAtMessage() noexcept {
    const std::size_t published = block_->published.load(std::memory_order_acquire);
    while (block_->file != nullptr && offset_ != published) {
        const std::uint64_t word =
            reinterpret_cast<const QueueFileFormat::Frame*>(block_->bytes + offset_)->word;
        if (!QueueFileFormat::isNote(word)) {
            break;
        }
        offset_ += QueueFileFormat::recordSize(QueueFileFormat::sizeIn(word));
    }
    return offset_ != published;
}

std::size_t Ring::Cursor::frameSize() const noexcept {
    return block_->file == nullptr ? 0 : sizeof(QueueFileFormat::Frame);
}

std::uint64_t Ring::Cursor::nextNumber() const noexcept {
    return PackedMessage::readNumber(block_->bytes + offset_ + frameSize(), before_);
}

PackedMessage::Unpacked Ring::Cursor::next() noexcept {
    const PackedMessage::Unpacked message =
        PackedMessage::read(block_->bytes + offset_ + frameSize(), before_);
    if (block_->file == nullptr) {
        before_ = message.sharedFields();
        offset_ += message.size;
    } else {
        offset_ += QueueFileFormat::recordSize(message.size);
    }
    passed_ = message.number;
    return message;
}

bool Ring::findFront(std::uint64_t lowest) noexcept {
    do {
        while (front_.findNext(front_.block())) {
            if (front_.nextNumber() >= lowest) {
                return true;
            }
            front_.next();
        }
    } while (passBlock());
    return false;
}

/// Moves the front from the end of its block to the next one, if there is one, and frees the block just left,
/// unless it is kept.
/// \return whether there may be another message
bool Ring::passBlock() noexcept {
    MessageBlock* const passed = front_.block();
    MessageBlock* const next = passed->next.load(std::memory_order_acquire);
    if (next == nullptr || front_.findNext(passed)) {
        return next != nullptr;
    }
    front_ = Cursor(next, front_.passed());
    if (lastKept_ == nullptr) {
        freeToFront();
    } else if (isFrontBeyondKept_) {
        lastKept_->next.store(next, std::memory_order_relaxed);
        pool_.giveBack(passed);
    } else {
        isFrontBeyondKept_ = passed == lastKept_;
    }
    return true;
}

void Ring::freeToFront() noexcept {
    while (oldest_ != front_.block()) {
        MessageBlock* const passed = oldest_;
        oldest_ = passed->next.load(std::memory_order_relaxed);
        pool_.giveBack(passed);
    }
}

void Ring::releaseLastBlock() {
    link(pool_.take(0));
    passBlock();
}

void Ring::keep() noexcept {
    lastKept_ = lastBlock_.load(std::memory_order_acquire);
    isFrontBeyondKept_ = false;
}

void Ring::release(const Cursor& read) noexcept {
    lastKept_ = nullptr;
    if (front_.passed() < read.passed()) {
        front_ = read;
    }
    freeToFront();
}

// A batch, which is read from the rings of all threads

/// Clears the batch but keeps its capacity.
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

/// The numbers have no gaps, so this searches for the ring with the next one. It is missing only while its
/// thread is between taking the number and publishing the message, where it never blocks.
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

/// A single thread can empty the cache of blocks in the time that it takes to write a thousand lines.
void MessageBatch::prepareMemory() const noexcept {
    constexpr std::uint64_t MESSAGES_PER_LOOK = 128;
    const Stream& stream = streams_[stream_];
    if (number_ % MESSAGES_PER_LOOK == 0 && stream.cursor.block()->file == nullptr) {
        stream.ring->pool().fill();
    }
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
