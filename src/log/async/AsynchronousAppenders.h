#pragma once

#include "log/async/BatchAppender.h"
#include "log/async/MessageBatch.h"
#include "log/queuefile/QueueFile.h"
#include "log/queuefile/Recovery.h"
#include "platform/CriticalSection.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <vector>

namespace ZAV {
namespace Log {

struct ThreadRecord;

/// What a line begins with that shows an exception which nobody in the consumer's thread has caught.
constexpr char UNCAUGHT_IN_CONSUMER[] = "IceUtil::Thread::run(): uncaught exception: ";

/// The appenders that the consumer writes to, in the order of their registration. It does not own them.
class AsynchronousAppenders {
public:
    /// Asks whether a logger lists an appender.
    using IsListed = bool (*)(const Logger& logger, const Appender* appender);

    /// Never waits for a running delivery, which does not reach the appender.
    /// \param isListed asked for each message whether its logger lists the appender; null if the appender gets
    ///        all messages
    void add(Appender* appender, IsListed isListed);

    /// Removes every entry of an appender. Waits for a running delivery, except inside an appender or a
    /// listener: once it returns, the appender is not called any more.
    /// \return true if no appender is left
    bool remove(Appender* appender);

    bool isEmpty();

    /// Takes the memory that `exchangeConfigured` needs.
    /// \param configured what is to get all messages then, in this order
    void prepareExchange(const std::vector<Appender*>& configured);

    /// Puts the appenders that were prepared in the place of those that get all messages. Waits for a running
    /// delivery, except inside an appender or a listener; it takes no memory.
    void exchangeConfigured();

    /// \return whether there is an appender that gets the messages of the loggers that list it
    bool hasOwnOfApplication();

    /// Gives every message of the batch to the first appender, then to the next, and so on. The caller must
    /// be in a `LibraryCall`. Nothing is thrown: what a command listener throws at a report is
    /// shown on the standard error stream.
    /// \param file where the appenders' progress is marked; null for none
    /// \return false if there is no appender
    bool deliver(MessageBatch& batch, QueueFile* file = nullptr) noexcept;

    /// Gives the appenders of the configuration what earlier processes have left in a file, each what it has
    /// not got yet, as `Log::recover` does.
    Recovery recover(QueueFile& file);

    /// Held by whoever wants no delivery to begin.
    Platform::CriticalSection& deliveryLock() noexcept ZAV_LOG_RETURN_CAPABILITY(appendersLock_) {
        return appendersLock_;
    }

    /// \return a number that changes whenever a message was given to an appender
    std::uint64_t progress() const noexcept { return progress_; }

    /// In a forked child: ends a delivery that the forking thread may be in. The messages are the parent's.
    void endDeliveryInChild() noexcept;

    /// Changes the entries for `exchangeConfigured`, once only: a fork may come behind it. Without more, for
    /// a forked child, in which nobody delivers.
    void exchangeEntries() noexcept ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS; // as below

private:
    struct Entry {
        Entry(Appender* added, IsListed asked);
        Appender* appenderOf(const MessageFields& message) const noexcept;
        BatchAppender* batchAppender() const noexcept;
        QueueFileMark markIn(QueueFile* file) const noexcept;

        std::atomic<Appender*> appender; ///< null once it was removed
        const IsListed isListed;
        BatchAppender* const batching; ///< the same, if it is to be told of rounds; else null
    };

    void deliverTo(const Entry& entry, MessageBatch& batch, bool isLast, QueueFile* file) noexcept
        ZAV_LOG_REQUIRES(appendersLock_);
    void deliverTogether(const Entry& entry, MessageBatch& batch, bool isLast, QueueFile* file) noexcept
        ZAV_LOG_REQUIRES(appendersLock_);
    void reportFailed(const Entry& entry, MessageBatch& batch, bool isLast) noexcept;
    static void giveTo(const Entry& entry, const PackedMessage::Unpacked& message,
                       ThreadRecord& thread) noexcept;
    void countProgress() noexcept;
    void renewList() ZAV_LOG_REQUIRES(appendersLock_);
    template <typename Condition>
    bool hasEntry(Condition condition) ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS; // one of the two locks is enough

    Platform::CriticalSection appendersLock_; ///< held for a whole delivery

    /// Held for each single step, so that a forked child finds the list whole.
    Platform::CriticalSection listLock_{Platform::AWAITED_BY_FORK};
    /// Entries come and go under both locks: either one is enough to read the list.
    std::list<Entry> asynchronousAppenders_ ZAV_LOG_GUARDED_BY(appendersLock_);
    std::list<Entry> added_ ZAV_LOG_GUARDED_BY(listLock_);    ///< since the last delivery began
    std::list<Entry> prepared_ ZAV_LOG_GUARDED_BY(listLock_); ///< for `exchangeConfigured`
    bool isPrepared_ ZAV_LOG_GUARDED_BY(listLock_) = false;
    std::atomic<std::uint64_t> progress_{0}; ///< written by whoever delivers
    std::atomic<bool> isAbandoned_{false};   ///< in a forked child: the delivery must not go on
};

} // namespace Log
} // namespace ZAV
