#pragma once

#include "log/appenders/BatchAppender.h"
#include "log/async/Ring.h"
#include "log/queuefile/QueueFile.h"
#include "platform/CriticalSection.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <optional>
#include <vector>

namespace ZAV {
namespace Log {

struct ThreadRecord;

/// Prefix of the line that shows an exception uncaught in the consumer's thread.
constexpr char UNCAUGHT_IN_CONSUMER[] = "IceUtil::Thread::run(): uncaught exception: ";

/// The appenders that the consumer writes to, in order of registration. Does not own them.
class AsynchronousAppenders {
public:
    /// Returns whether a logger lists an appender.
    using IsListed = bool (*)(const Logger& logger, const Appender* appender);

    /// Never waits for a running delivery, which does not include the new appender.
    /// \param isListed called for each message: whether its logger lists the appender; null if the appender
    ///        gets all messages
    void add(Appender* appender, IsListed isListed);

    /// Removes every entry of an appender. Waits for a running delivery, except inside an appender or a
    /// listener: after it returns, the appender is no longer called.
    /// \return true if no appender is left
    bool remove(Appender* appender);

    bool isEmpty();

    /// Allocates the memory that `exchangeConfigured` needs.
    /// \param configured the appenders that will then get all messages, in this order
    void prepareExchange(const std::vector<Appender*>& configured);

    /// Replaces the appenders that get all messages with the prepared ones. Waits for a running delivery,
    /// except inside an appender or a listener. Does not allocate.
    void exchangeConfigured();

    /// \return whether there is an appender that gets only the messages of the loggers that list it
    bool hasApplicationAppender();

    /// Delivers every message of the batch to the first appender, then to the next, and so on. The caller
    /// must be in a `LibraryCall`. An exception that a command listener throws for a report is shown on the
    /// standard error stream.
    /// \param file where the appenders' progress is marked; null for none
    /// \return false if there is no appender
    bool deliver(MessageBatch& batch, QueueFile* file = nullptr) noexcept;

    /// Delivers to each configured appender the messages of earlier processes in a file that it has not got
    /// yet; see `Log::recover`.
    Recovery recover(QueueFile& file);

    /// Hold it to keep a delivery from starting.
    Platform::CriticalSection& deliveryLock() noexcept ZAV_LOG_RETURN_CAPABILITY(appendersLock_) {
        return appendersLock_;
    }

    /// \return a number that changes whenever a message was delivered to an appender
    std::uint64_t progress() const noexcept { return progress_; }

    /// In a forked child: aborts a delivery that the forking thread may be in. The parent delivers the
    /// messages.
    void endDeliveryInChild() noexcept { isAbandoned_ = true; }

    /// Replaces the entries for `exchangeConfigured`, at most once per preparation, since a fork may follow.
    /// Called alone in a forked child, where no delivery runs.
    void exchangeEntries() noexcept ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS; // see `hasEntry`

private:
    struct Entry {
        Entry(Appender* added, IsListed asked);
        Appender* appenderOf(const MessageFields& message) const noexcept;
        BatchAppender* batchAppender() const noexcept;
        QueueFileMark markIn(QueueFile* file) const noexcept;

        std::atomic<Appender*> appender; ///< null once removed
        const IsListed isListed;
        BatchAppender* const batching; ///< the same appender if it batches the lines of a round; else null
    };

    void deliverOneByOne(const Entry& entry, MessageBatch& batch, bool isLast, QueueFile* file) noexcept
        ZAV_LOG_REQUIRES(appendersLock_);
    void deliverBatched(const Entry& entry, MessageBatch& batch, bool isLast, QueueFile* file) noexcept
        ZAV_LOG_REQUIRES(appendersLock_);
    void reportFailed(const Entry& entry, MessageBatch& batch, bool isLast) noexcept;
    static void giveTo(const Entry& entry, const PackedMessage::Unpacked& message,
                       ThreadRecord& thread) noexcept;
    void countProgress() noexcept {
        progress_.store(progress_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
    void prepareMemory(const MessageBatch& batch) const noexcept {
        if (!isAbandoned_) { // otherwise the batch belongs to a forked child's parent
            batch.prepareMemory();
        }
    }
    void renewList() ZAV_LOG_REQUIRES(appendersLock_);
    template <typename Condition>
    bool hasEntry(Condition condition) ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS; // either lock is enough to read

    Platform::CriticalSection appendersLock_; ///< held during a whole delivery

    /// Held for each single change, so that a forked child finds the lists consistent.
    Platform::CriticalSection listLock_{Platform::AWAITED_BY_FORK};
    /// Modified under both locks; either one is enough to read it.
    std::list<Entry> asynchronousAppenders_ ZAV_LOG_GUARDED_BY(appendersLock_);
    std::list<Entry> added_ ZAV_LOG_GUARDED_BY(listLock_); ///< since the last delivery began
    /// For `exchangeConfigured`; none if nothing is prepared or it has been exchanged. The list may be empty.
    std::optional<std::list<Entry>> prepared_ ZAV_LOG_GUARDED_BY(listLock_);
    std::atomic<std::uint64_t> progress_{0}; ///< written by the delivering thread
    std::atomic<bool> isAbandoned_{false};   ///< in a forked child: the delivery must not continue
};

} // namespace Log
} // namespace ZAV
