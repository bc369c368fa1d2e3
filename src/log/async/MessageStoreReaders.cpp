// Taking messages out of the store: discarding single ones, or taking a batch.

#include "log/async/DiscardedLines.h"
#include "log/async/MessageBatch.h"
#include "log/async/MessageStore.h"
#include "log/layout/UndeliveredMessage.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

MessageStore::Taken MessageStore::discardOldest(std::uint64_t least, DiscardedLines& lines,
                                                const char* reason) noexcept {
    const ScopedLock lock(storeLock_);
    if (size() == 0 || size() < least || isRendering_) {
        return NOTHING;
    }
    Ring* const ring = ringWithOldest();
    if (ring == nullptr) {
        return NOT_PUBLISHED;
    }
    isRendering_ = true; // allocating may run application code that logs
    lines.add(shownLine(reason, ring->front().next().fields), reason);
    isRendering_ = false;
    countDiscarded();
    return TAKEN;
}

void MessageStore::countDiscarded() noexcept {
    ++lastTaken_;
    ++discardedCount_;
    if (delivered_ == nullptr) {
        markDone();
        lastDone_.store(lastTaken_);
    } else {
        for (FileMarks& marks : marks_) {
            marks.taken.set(lastTaken_);
        }
    }
}

/// To be called when everything taken out was delivered or discarded.
void MessageStore::markDone() noexcept {
    for (FileMarks& marks : marks_) {
        marks.done.set(lastTaken_);
    }
}

bool MessageStore::discard(const MessageFields& message, DiscardedLines& lines, const char* reason,
                           bool isLastResort) {
    std::string line = shownLine(reason, message);
    const ScopedLock lock(storeLock_);
    if (isLastResort && isRendering_) {
        lines.add(std::move(line), reason);
        return true;
    }
    std::uint64_t last = lastTaken_;
    if ((isClosed_ && !isLastResort) || !lastNumber_.compare_exchange_strong(last, last + 1)) {
        return false;
    }
    lines.add(std::move(line), reason);
    countDiscarded();
    return true;
}

void MessageStore::discardOversized(const MessageFields& message, DiscardedLines& lines, const char* reason) {
    std::string line = shownLine(reason, message);
    const ScopedLock lock(storeLock_);
    lines.add(std::move(line), reason);
    ++oversizedCount_;
}

/// \return null if the oldest message is not published yet
Ring* MessageStore::ringWithOldest() noexcept {
    const std::uint64_t number = lastTaken_ + 1;
    const auto ring = std::find_if(rings_.begin(), rings_.end(), [number](const std::unique_ptr<Ring>& any) {
        return any->findFront(number) && any->front().nextNumber() == number;
    });
    return ring == rings_.end() ? nullptr : ring->get();
}

void MessageStore::hold() noexcept {
    const ScopedLock lock(storeLock_);
    lastToTake_.store(lastNumber_);
}

void MessageStore::endHold() noexcept {
    const ScopedLock lock(storeLock_);
    lastToTake_.store(NO_LIMIT);
}

/// The number of the last message is read before the rings: each ring holds the messages numbered by then, or
/// is about to. Discarding is not limited by a hold.
void MessageStore::take(MessageBatch& batch) {
    const ScopedLock lock(storeLock_);
    batch.streams_.reserve(rings_.size());
    const std::uint64_t taken = lastTaken_;
    const std::uint64_t last = std::min<std::uint64_t>(lastNumber_, lastToTake_);
    batch.begin(taken + 1, isClosed_ ? taken : std::max(last, taken));
    if (batch.size() == 0 || delivered_ != nullptr) {
        batch.begin(1, 0); // another thread is still delivering one
        return;
    }
    for (const std::unique_ptr<Ring>& ring : rings_) {
        ring->findFront(batch.first_);
        ring->keep();
        batch.streams_.push_back({ring.get(), ring->lastKept(), ring->front(), ring->front(), 0});
    }
    lastTaken_ = batch.last_;
    delivered_ = &batch;
    for (FileMarks& marks : marks_) {
        marks.batchEnd.set(lastTaken_); // first, or the batch would appear discarded
        marks.taken.set(lastTaken_);
    }
}

void MessageStore::release(MessageBatch& batch, bool isDelivered) {
    if (batch.size() == 0) {
        return;
    }
    const ScopedLock lock(storeLock_);
    (isDelivered ? deliveredCount_ : discardedCount_) += batch.size();
    delivered_ = nullptr;
    // The marks are set before the memory is released: without them, what remains of the batch would be
    // delivered again. `lastDone_` is set after it, since threads that wait for memory check it.
    markDone();
    for (const MessageBatch::Stream& stream : batch.streams_) {
        stream.ring->release(stream.cursor);
    }
    lastDone_.store(lastTaken_);
    batch.begin(1, 0);
    removeEndedRings();
}

/// Batches are released under the lock, so this one stays valid meanwhile.
void MessageStore::showRestOfDelivery(DiscardedLines& lines, const char* reason) noexcept {
    const ScopedLock lock(storeLock_);
    if (delivered_ == nullptr) {
        return;
    }
    try {
        MessageBatch rest;
        delivered_->copyRestTo(rest);
        while (rest.hasNext()) {
            lines.add(shownLine(reason, rest.next().fields), reason);
        }
    } catch (const std::bad_alloc&) {
        lines.add(std::string(), reason);
    }
}

// A batch

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
