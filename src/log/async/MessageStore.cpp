#include "log/async/MessageStore.h"

#include "log/async/DiscardedLines.h"
#include "log/layout/UndeliveredMessage.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Process.h"
#include "platform/Threads.h"

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
    const int answeredReports = threadRecord().answeredReports;
    const std::optional<PackedMessage> packed =
        ring.reserve(message, answeredReports, lastNumber_.load(std::memory_order_relaxed), file);
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

/// Creates the slot with the store, so that no thread creates it while another one forks.
MessageStore::MessageStore() {
    slotOfThread();
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
    Ring* const added = ring.get();
    const ScopedLock lock(storeLock_);
    rings_.push_back(std::move(ring));
    thread.ring = added;
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

bool MessageStore::fits(const MessageFields& message) const {
    const QueueFile* const file = this->file();
    return file == nullptr || file->fits(Ring::storedSize(message));
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

void MessageStore::close() noexcept {
    const ScopedLock lock(storeLock_);
    isClosed_ = true;
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
