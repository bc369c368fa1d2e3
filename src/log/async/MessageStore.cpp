#include "log/async/MessageStore.h"

#include "log/async/DiscardedLines.h"
#include "log/layout/UndeliveredMessage.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Process.h"

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

// Called by logging calls

std::uint64_t MessageStore::append(const MessageFields& message, std::uint64_t limit) {
    ThreadRecord& thread = threadRecord();
    QueueFile* const file = this->file();
    const bool hasRing = thread.ring != nullptr || addRing(thread);
    const std::uint64_t number = hasRing ? append(*thread.ring, message, limit, file) : FILE_FULL;
    return number == FILE_FULL ? appendToSharedRing(message, limit, file) : number;
}

/// Nothing may fail once the message has its number, since readers wait for it before all later ones.
std::uint64_t MessageStore::append(Ring& ring, const MessageFields& message, std::uint64_t limit,
                                   QueueFile* file) {
    const std::optional<PackedMessage> packed = ring.reserve(
        message, threadRecord().answeredReports, lastNumber_.load(std::memory_order_relaxed), file);
    if (!packed) {
        return FILE_FULL;
    }
    const std::uint64_t number = limit == NO_LIMIT ? lastNumber_.fetch_add(1) + 1 : takeNumber(limit);
    if (number != AT_LIMIT) {
        ring.append(*packed, number);
    }
    return number;
}

/// \return `AT_LIMIT` if the limit is reached
std::uint64_t MessageStore::takeNumber(std::uint64_t limit) noexcept {
    std::uint64_t last = lastNumber_;
    while (last - lastTaken_ < limit) {
        if (lastNumber_.compare_exchange_weak(last, last + 1)) {
            return last + 1;
        }
    }
    return AT_LIMIT;
}

/// Its destructor function ends the ring of an exiting thread.
Platform::ThreadSlot& MessageStore::slotOfThread() {
    struct Slot : Platform::ThreadSlot, Platform::NeverDestroyed<Slot> {
        Slot() : ThreadSlot([](void* store) { static_cast<MessageStore*>(store)->endRing(); }) {}
    };
    return Slot::instance();
}

/// \return false if the thread gets none, because it is ending and would leak the ring
bool MessageStore::addRing(ThreadRecord& thread) {
    if (thread.hasEndedRing || !slotOfThread().set(this)) {
        return false;
    }
    auto ring = std::make_unique<Ring>(pool_);
    const ScopedLock lock(storeLock_);
    rings_.push_back(std::move(ring));
    thread.ring = rings_.back().get();
    return true;
}

/// The ring is removed once its messages are gone.
void MessageStore::endRing() noexcept {
    ThreadRecord& thread = threadRecord();
    thread.hasEndedRing = true;
    const ScopedLock lock(storeLock_);
    if (thread.ring != nullptr) {
        thread.ring->end();
        thread.ring = nullptr;
        removeEndedRings();
    }
}

void MessageStore::removeEndedRings() noexcept {
    const std::uint64_t lowest = lastTaken_ + 1;
    const auto isOver = [lowest](const std::unique_ptr<Ring>& ring) {
        return ring->hasEnded() && ring->lastKept() == nullptr && !ring->findFront(lowest);
    };
    rings_.erase(std::remove_if(rings_.begin(), rings_.end(), isOver), rings_.end());
}

/// Once the shared ring is empty its last block is returned, so that it can hold messages again; other rings
/// keep theirs.
std::uint64_t MessageStore::appendToSharedRing(const MessageFields& message, std::uint64_t limit,
                                               QueueFile* file) {
    const ScopedLock lock(storeLock_);
    if (sharedRing_ == nullptr) {
        rings_.push_back(std::make_unique<Ring>(pool_, QueueFile::ALSO_RESERVED));
        sharedRing_ = rings_.back().get();
    }
    const std::uint64_t number = append(*sharedRing_, message, limit, file);
    if (number != FILE_FULL || sharedRing_->lastKept() != nullptr || sharedRing_->findFront(lastTaken_ + 1)) {
        return number;
    }
    sharedRing_->releaseLastBlock();
    return append(*sharedRing_, message, limit, file);
}

/// Locked so that nothing leaves the queue meanwhile; otherwise messages that left after the other counts
/// were read would count as waiting.
LogStatistics MessageStore::statistics() const noexcept {
    LogStatistics statistics;
    const ScopedLock lock(storeLock_);
    statistics.delivered = deliveredCount_;
    statistics.discarded = discardedCount_ + oversizedCount_;
    statistics.queued = lastNumber_ + oversizedCount_;
    statistics.waiting = statistics.queued - statistics.delivered - statistics.discarded;
    return statistics;
}

// Called by readers

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

// The queue's file

/// Messages may still wait in a file used before. New marks are set at once to the queue's progress.
void MessageStore::keepIn(QueueFile* file) {
    const ScopedLock lock(storeLock_);
    if (file != nullptr) {
        const auto known = std::find_if(marks_.begin(), marks_.end(),
                                        [file](const FileMarks& marks) { return marks.file == file; });
        FileMarks& marks = known != marks_.end() ? *known : marks_.emplace_back(FileMarks{file, {}, {}, {}});
        marks.batchEnd = file->mark(QueueFileFormat::BATCH_END);
        marks.taken = marks.batchEnd ? file->mark(QueueFileFormat::TAKEN)
                                     : QueueFileMark(); // without `batchEnd` the batch would appear discarded
        marks.done = file->mark(QueueFileFormat::DONE);
        if (delivered_ != nullptr) {
            marks.batchEnd.set(delivered_->last_);
            marks.taken.set(lastTaken_);
        }
        marks.done.set(lastDone_);
    }
    file_.store(file, std::memory_order_release);
}

// In a forked child

void MessageStore::renewInChild() noexcept {
    const ScopedLock lock(storeLock_);
    threadRecord().ring = nullptr;
    sharedRing_ = nullptr;
    file_ = nullptr; // owned by the parent
    marks_.clear();
    rings_.clear();
    lastNumber_ = deliveredCount_ + discardedCount_;
    lastTaken_.store(lastNumber_);
    lastDone_.store(lastNumber_);
    lastToTake_.store(NO_LIMIT);
    delivered_ = nullptr;
    isRendering_ = false;
    isClosed_ = false;
}

} // namespace Log
} // namespace ZAV
