#pragma once

#include "log/LogStatistics.h"
#include "log/async/Ring.h"
#include "log/queuefile/QueueFile.h"
#include "platform/CriticalSection.h"
#include "platform/Threads.h"

#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace ZAV {
namespace Log {

class DiscardedLines;
struct ThreadRecord;

/// The queued messages of all threads, and their order.
///
/// Each thread appends to its own ring; one counter assigns every message of the process its number, which is
/// its position in the order, counted from 1. Appending takes no lock, except for a thread's first message,
/// for a new block in a file, and in the ring that threads share at their end or while the file has no block
/// for theirs. The process has one store, which is never destroyed, since threads may still log while the
/// process ends. Thread-safe.
class MessageStore {
public:
    /// Creates the slot as well, so that no thread creates it while another one forks.
    MessageStore() { slotOfThread(); }

    static constexpr std::uint64_t NO_LIMIT = std::numeric_limits<std::uint64_t>::max();

    // Called by logging calls

    // Returned instead of a number if the message was not appended:
    static constexpr std::uint64_t AT_LIMIT = 0; ///< the limit is reached
    static constexpr std::uint64_t FILE_FULL = std::numeric_limits<std::uint64_t>::max();

    /// \return whether a message was appended
    static bool isNumber(std::uint64_t number) noexcept { return number != AT_LIMIT && number != FILE_FULL; }

    /// Appends a message.
    /// \param limit most messages that may wait, including this one
    /// \return its number, `AT_LIMIT` or `FILE_FULL`
    /// \throw std::bad_alloc if there is no memory for the message; it is then not appended
    std::uint64_t append(const MessageFields& message, std::uint64_t limit = NO_LIMIT);

    /// \return whether the queue's file, if there is one, could hold the message when empty
    bool fits(const MessageFields& message) const {
        const QueueFile* const file = this->file();
        return file == nullptr || file->fits(Ring::storedSize(message));
    }

    // Progress. Sequentially consistent, for callers that read other atomics as well.

    std::uint64_t lastNumber() const noexcept { return lastNumber_; } ///< of the message appended last
    std::uint64_t lastTaken() const noexcept { return lastTaken_; }   ///< of the message taken out last
    std::uint64_t lastDone() const noexcept { return lastDone_; }     ///< delivered or discarded up to it
    std::uint64_t size() const noexcept {
        const std::uint64_t taken = lastTaken_; // read first, so that it is not the larger one
        return lastNumber_ - taken;
    }

    /// \return how many messages wait, up to and including `number`
    std::uint64_t sizeUpTo(std::uint64_t number) const noexcept {
        const std::uint64_t taken = lastTaken_.load(std::memory_order_relaxed);
        return number > taken ? number - taken : 0;
    }

    /// \return the queue's statistics, without `failed`
    LogStatistics statistics() const noexcept;

    // Called by readers

    enum Taken {
        TAKEN,        ///< the oldest message
        NOTHING,      ///< fewer than `least` messages wait
        NOT_PUBLISHED ///< the oldest message is not published yet; its thread will publish it without
                      ///< blocking
    };

    /// Takes the oldest message out if at least `least` messages wait, and adds its line to `lines`.
    /// \param reason prefix of the line
    Taken discardOldest(std::uint64_t least, DiscardedLines& lines, const char* reason) noexcept;

    /// If no other message waits, appends a message and takes it out at once, so that no batch holds it. It
    /// counts as discarded.
    /// \param isLastResort whether there is no other way to handle it, even if the queue is closed. A message
    ///        logged while another discarded one is being rendered is then shown without being counted
    /// \return false if others wait; it is then not appended
    bool discard(const MessageFields& message, DiscardedLines& lines, const char* reason,
                 bool isLastResort = false);

    /// Adds the line of a message that does not fit into the file to `lines`. The message counts as queued
    /// and discarded, but gets no number.
    void discardOversized(const MessageFields& message, DiscardedLines& lines, const char* reason);

    /// From now on, `take` leaves newly appended messages in the queue.
    void hold() noexcept {
        const Platform::ScopedLock lock(storeLock_);
        lastToTake_.store(lastNumber_);
    }
    void endHold() noexcept {
        const Platform::ScopedLock lock(storeLock_);
        lastToTake_.store(NO_LIMIT);
    }

    /// \return whether a hold is active
    bool hasHold() const noexcept { return lastToTake_ != NO_LIMIT; }

    /// \return whether everything queued before the hold has been taken out
    bool isHeld() const noexcept { return hasHold() && lastTaken_ >= lastToTake_; }

    /// \return the number of the last message before the hold; call it only while a hold is active
    std::uint64_t lastBeforeHold() const noexcept { return lastToTake_; }

    /// Preallocates memory for the next messages, if the queue is kept in memory.
    void prepareMemory() noexcept {
        if (file() == nullptr) {
            pool_.fill();
        }
    }

    /// Takes out everything queued, up to a hold; it counts as waiting until `release`.
    /// \throw std::bad_alloc; nothing is taken then
    void take(MessageBatch& batch);

    /// Releases the memory of a batch.
    /// \param isDelivered false if there was no appender to deliver it to
    void release(MessageBatch& batch, bool isDelivered);

    /// Adds lines to `lines` for the messages of the batch taken last that have not been delivered to all
    /// appenders.
    void showRestOfDelivery(DiscardedLines& lines, const char* reason) noexcept;

    // The queue's file

    /// Keeps newly appended messages in a file. Call it again when space has become free in the file, to
    /// ensure that it has its marks.
    /// \param file must never be destroyed; null for memory
    /// \throw std::bad_alloc
    void keepIn(QueueFile* file);

    /// \return null if the queue is kept in memory
    QueueFile* file() const noexcept { return file_.load(std::memory_order_acquire); }

    /// \return whether the file is running full
    bool isFilling() noexcept {
        QueueFile* const file = this->file();
        return file != nullptr && file->isFilling();
    }

    /// From now on, `take` returns empty batches.
    void close() noexcept {
        const Platform::ScopedLock lock(storeLock_);
        isClosed_ = true;
    }
    bool isClosed() const noexcept { return isClosed_; }

    /// In a forked child: discards everything. Does not allocate.
    void renewInChild() noexcept;

private:
    using Number = std::atomic<std::uint64_t>;

    std::uint64_t takeNumber(std::uint64_t limit) noexcept;
    std::uint64_t append(Ring& ring, const MessageFields& message, std::uint64_t limit, QueueFile* file);
    std::uint64_t appendToSharedRing(const MessageFields& message, std::uint64_t limit, QueueFile* file);
    static Platform::ThreadSlot& slotOfThread();
    bool addRing(ThreadRecord& thread);
    void endRing() noexcept;
    void removeEndedRings() noexcept ZAV_LOG_REQUIRES(storeLock_);
    Ring* ringWithOldest() noexcept ZAV_LOG_REQUIRES(storeLock_);
    void countDiscarded() noexcept ZAV_LOG_REQUIRES(storeLock_);
    void markDone() noexcept ZAV_LOG_REQUIRES(storeLock_);

    /// Marks of the queue in one file.
    struct FileMarks {
        QueueFile* file;
        QueueFileMark done;
        QueueFileMark batchEnd;
        QueueFileMark taken;
    };

    // All except `lastNumber_` change under the lock.
    Number lastNumber_{0};
    Number lastTaken_{0};
    Number lastDone_{0};
    Number lastToTake_{NO_LIMIT}; ///< last message before a hold
    std::atomic<bool> isClosed_{false};

    /// Held briefly: to take messages out or release them, and to add or remove a ring.
    mutable Platform::CriticalSection storeLock_{Platform::AWAITED_BY_FORK};
    std::atomic<QueueFile*> file_{nullptr}; ///< read once per call
    BlockPool pool_;
    std::vector<std::unique_ptr<Ring>> rings_ ZAV_LOG_GUARDED_BY(storeLock_);
    /// One of `rings_`, for threads that get no ring of their own, or no block of the file for it.
    Ring* sharedRing_ ZAV_LOG_GUARDED_BY(storeLock_) = nullptr;
    std::vector<FileMarks> marks_ ZAV_LOG_GUARDED_BY(storeLock_); ///< of every file used so far
    // Messages that were delivered, that were discarded, and that did not fit into the file:
    std::uint64_t deliveredCount_ ZAV_LOG_GUARDED_BY(storeLock_) = 0;
    std::uint64_t discardedCount_ ZAV_LOG_GUARDED_BY(storeLock_) = 0;
    std::uint64_t oversizedCount_ ZAV_LOG_GUARDED_BY(storeLock_) = 0;
    MessageBatch* delivered_ ZAV_LOG_GUARDED_BY(storeLock_) = nullptr; ///< taken and not yet released
    bool isRendering_ ZAV_LOG_GUARDED_BY(storeLock_) = false;          ///< a discarded message; may allocate
};

} // namespace Log
} // namespace ZAV
