#pragma once

#include "log/LogStatistics.h"
#include "log/async/MessageBatch.h"
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
/// Each thread appends to a ring of its own; one counter gives every message of the process its number, which
/// is its place in the order, counted from 1. A call that appends takes no lock but for its thread's first
/// message. The process has one store, which is never destroyed, since threads may still log while the
/// process ends. All operations may be called from any thread.
class MessageStore {
public:
    MessageStore();

    static constexpr std::uint64_t NO_LIMIT = std::numeric_limits<std::uint64_t>::max();

    // The logging call's side

    // In the place of a number, where a message was not appended:
    static constexpr std::uint64_t AT_LIMIT = 0; ///< more messages would wait than may
    static constexpr std::uint64_t FILE_FULL = std::numeric_limits<std::uint64_t>::max();

    /// \return whether a message was appended
    static bool isNumber(std::uint64_t number) noexcept { return number != AT_LIMIT && number != FILE_FULL; }

    /// Appends a message.
    /// \param limit of the messages that wait with it
    /// \return its number, `AT_LIMIT` or `FILE_FULL`
    /// \throw std::bad_alloc if there is no memory for the message, which was not appended then
    std::uint64_t append(const MessageFields& message, std::uint64_t limit = NO_LIMIT);

    /// \return whether the queue's file, if there is one, could hold a message if nothing else was in it
    bool fits(const MessageFields& message) const;

    // How far it is. Sequentially consistent, for those who look at something else as well.

    std::uint64_t lastNumber() const noexcept { return lastNumber_; } ///< of the message appended last
    std::uint64_t lastTaken() const noexcept { return lastTaken_; }   ///< of the message taken out last
    std::uint64_t lastDone() const noexcept { return lastDone_; } ///< all to it were delivered or discarded
    std::uint64_t size() const noexcept {
        const std::uint64_t taken = lastTaken_; // first, so that it is not the larger one
        return lastNumber_ - taken;
    }

    /// \return how many messages wait, that one being the last
    std::uint64_t sizeUpTo(std::uint64_t number) const noexcept {
        const std::uint64_t taken = lastTaken_.load(std::memory_order_relaxed);
        return number > taken ? number - taken : 0;
    }

    /// \return the numbers of the queue; `failed` is not counted here
    LogStatistics statistics() const noexcept;

    // The readers' side

    enum Taken {
        TAKEN,       ///< the oldest message
        NOTHING,     ///< fewer messages wait than asked for
        NOT_YET_HERE ///< the oldest message is not published yet; its thread waits for nothing before it does
    };

    /// Takes the oldest message out if at least so many wait, and leaves the line that shows it to others.
    /// \param reason what the line begins with
    Taken discardOldest(std::uint64_t least, DiscardedLines& lines, const char* reason) noexcept;

    /// Appends a message and takes it out at once, so that no batch holds it, if no other waits. It counts as
    /// discarded.
    /// \param isLastWay whether it can go nowhere else, also if the queue is closed. One that is logged from inside
    ///        the rendering of another discarded message is shown then without being counted
    /// \return false if others wait, and it was not appended
    bool discard(const MessageFields& message, DiscardedLines& lines, const char* reason,
                 bool isLastWay = false);

    /// Leaves the line of a message to others that does not fit into the file. It counts as queued and
    /// discarded, without a place in the order.
    void discardUnfit(const MessageFields& message, DiscardedLines& lines, const char* reason);

    /// Has `take` leave what is appended from now on in the queue.
    void hold() noexcept;
    void endHold() noexcept;

    /// \return whether there is a hold
    bool hasHold() const noexcept { return lastToTake_ != NO_LIMIT; }

    /// \return whether all is taken out that was there when the hold began
    bool isHeld() const noexcept { return hasHold() && lastTaken_ >= lastToTake_; }

    /// \return the number of the last message before the hold; to be asked while there is one
    std::uint64_t lastBeforeHold() const noexcept { return lastToTake_; }

    /// Has memory ready for what is logged next, if the queue is kept in memory.
    void prepareMemory() noexcept {
        if (file() == nullptr) {
            pool_.fill();
        }
    }

    /// Takes out all that is there, up to a hold; it counts as waiting until `release`.
    /// \throw std::bad_alloc; nothing was taken then
    void take(MessageBatch& batch);

    /// Gives the memory of a batch back.
    /// \param isDelivered false if there was no appender to give it to
    void release(MessageBatch& batch, bool isDelivered);

    /// Leaves the lines to others that show what the batch taken last holds and not all appenders have got
    /// yet.
    void showRestOfDelivery(DiscardedLines& lines, const char* reason) noexcept;

    // The file that the queue is kept in

    /// Keeps what is appended from now on in a file. To be called again when a file has got room, so that it
    /// has marks for sure.
    /// \param file must never be destroyed; null for memory
    /// \throw std::bad_alloc
    void keepIn(QueueFile* file);

    /// \return null if the queue is kept in memory
    QueueFile* file() const noexcept { return file_.load(std::memory_order_acquire); }

    /// \return whether the file is about to become full
    bool isFilling() noexcept {
        QueueFile* const file = this->file();
        return file != nullptr && file->isFilling();
    }

    /// From now on nothing is taken out as a batch.
    void close() noexcept;

    /// In a forked child: forgets everything. It takes no memory.
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

    /// What a file says of the queue, as far as it holds messages.
    struct FileMarks {
        QueueFile* file;
        QueueFileMark done;
        QueueFileMark batchEnd;
        QueueFileMark taken;
    };

    // All but the first number change under the lock.
    Number lastNumber_{0};
    Number lastTaken_{0};
    Number lastDone_{0};
    Number lastToTake_{NO_LIMIT}; ///< of the message behind which there is a hold
    Number deliveredCount_{0};
    Number discardedCount_{0};

    /// Held for short steps: messages are taken out or given back, a ring comes or goes.
    mutable Platform::CriticalSection storeLock_{Platform::AWAITED_BY_FORK};
    std::atomic<QueueFile*> file_{nullptr}; ///< a call reads it once
    BlockPool pool_;
    std::vector<std::unique_ptr<Ring>> rings_ ZAV_LOG_GUARDED_BY(storeLock_);
    /// One of them, for threads that get none of their own, or no memory of a file for it.
    Ring* sharedRing_ ZAV_LOG_GUARDED_BY(storeLock_) = nullptr;
    std::vector<FileMarks> marks_ ZAV_LOG_GUARDED_BY(storeLock_); ///< of each file that was ever used
    std::uint64_t unfitCount_ ZAV_LOG_GUARDED_BY(storeLock_) = 0; ///< messages that did not fit into the file
    MessageBatch* delivered_ ZAV_LOG_GUARDED_BY(storeLock_) = nullptr; ///< not given back yet
    bool isRendering_ ZAV_LOG_GUARDED_BY(storeLock_) = false; ///< a discarded message, which may take memory
    bool isClosed_ ZAV_LOG_GUARDED_BY(storeLock_) = false;
};

} // namespace Log
} // namespace ZAV
