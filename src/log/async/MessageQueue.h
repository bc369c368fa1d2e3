#pragma once

#include "log/async/DiscardedLines.h"
#include "log/async/MessageStore.h"
#include "log/async/Threading.h"
#include "log/config/DispatcherSettings.h"

#include <atomic>
#include <cstdint>

namespace ZAV {
namespace Log {

/// The messages waiting for the consumer, oldest first.
///
/// Adds to `MessageStore` the limit, waiting, waking and discarding. A logging call that does none of the
/// last three takes no lock. The process has one queue, which is never destroyed, since threads may still log
/// while the process ends. Thread-safe.
class MessageQueue {
public:
    MessageQueue() { store(DispatcherSettings()); }

    /// Reads the dispatcher's settings from the properties; they apply from the next message or wait on.
    void configure(const Util::Properties& properties);

    DispatcherSettings settings() const;

    /// Applies settings from the next message or wait on.
    void use(const DispatcherSettings& settings);

    /// Appends a message. If the queue has reached its limit, or was closed, the oldest message is taken out
    /// and shown on the standard error stream.
    /// \param mayWaitForRoom whether to wait for room instead, if that is configured and a consumer is
    ///        running
    /// \throw std::bad_alloc if there is no memory for the message; it is then not queued
    void append(const MessageFields& message, bool mayWaitForRoom = false);

    /// Makes the consumer take what is queued, and waits until it was delivered or discarded.
    /// \param timeout 0 for no timeout
    /// \return false on timeout, or if messages wait and no consumer will take them
    bool flush(Util::TimeUtils::Time timeout);

    /// \return the queue's statistics, without `failed`
    LogStatistics statistics() const noexcept { return store_.statistics(); }

    /// Keeps newly appended messages in a file.
    /// \param file must never be destroyed; null for memory
    /// \throw std::bad_alloc
    void keepIn(QueueFile* file) { store_.keepIn(file); }

    /// \return null if the queue is kept in memory
    QueueFile* file() const noexcept { return store_.file(); }

    // Called by the consumer

    /// Sets whether a consumer takes the messages from now on; if not, threads stop waiting for it.
    void setServed(bool isServed);

    /// Waits for the waiting period. Returns earlier if the queue is half full or holds a message to be
    /// delivered promptly, if a thread waits for the messages, if the settings have changed, or if the queue
    /// is no longer served.
    /// \return false if the calling thread is the only one left in the process, so that nothing else can log
    bool wait();

    /// Preallocates memory for the next messages.
    void prepareMemory() noexcept { store_.prepareMemory(); }

    /// Takes out everything queued, up to a hold; it counts as waiting until `release`. If out of memory, it
    /// takes nothing.
    void take(MessageBatch& batch);

    /// Releases the memory of a batch.
    /// \param isDelivered false if there was no appender to deliver it to
    void release(MessageBatch& batch, bool isDelivered);

    /// \return the consumer's configured priority, or `DEFAULT_PRIORITY_MARK`
    int priority() const noexcept { return priority_.load(std::memory_order_relaxed); }

    // Called to control the consumer

    /// Ends the consumer's wait before its waiting period is over; no effect if it is not waiting.
    void wake();

    /// Makes the consumer leave newly appended messages in the queue and wait at that point until `endHold`.
    void hold() noexcept;
    void endHold();
    bool hasHold() const noexcept { return store_.hasHold(); }

    /// Waits until everything queued before the hold was delivered or discarded, unless no consumer will take
    /// it.
    void awaitHold();

    /// Makes the consumer take what is queued, and waits until it was delivered or discarded, unless no
    /// consumer will take it.
    /// \return false on timeout
    bool drain(const Deadline& deadline);

    // The end of the process

    /// From now on no message is kept: a call that appends one shows everything queued.
    void close();

    /// Shows everything queued on the standard error stream.
    void showAll();

    /// Shows the messages that a running delivery has not yet delivered to all appenders, without waiting for
    /// it. What it still writes before the process exits is thus duplicated, which is better than lost.
    void showRestOfDelivery();

    /// Waits until everything discarded is shown, as long as that makes progress.
    void finishShowing() { lines_.finish(); }

    /// In a forked child: resets to an empty queue without a consumer. Does not allocate.
    void renewInChild() noexcept;

private:
    enum Service : unsigned {
        SERVED = 1, ///< a consumer waits or delivers, and has not been asked to end
        HELD = 2    ///< a hold is active
    };

    void store(const DispatcherSettings& settings);
    bool isServed() const noexcept { return (service_ & SERVED) != 0; }
    bool willBeServed() const noexcept;
    template <typename IsServed>
    bool awaitDone(std::uint64_t last, const Deadline& deadline, const IsServed& isServed);
    bool deliversPromptly() const noexcept { return waitingPeriod_ == 0; }

    std::uint64_t appendWithRoom(const MessageFields& message);
    std::uint64_t appendToFullFile(const MessageFields& message);
    std::uint64_t discardOversized(const MessageFields& message);
    void waitForRoom();
    void waitForDelivery(std::uint64_t done);
    bool discardIfNoneWaits(const MessageFields& message);
    void hasAppended(std::uint64_t number);
    void callConsumer();
    void discardOldest();
    template <typename Condition>
    bool poll(const Condition& isDue);
    Deadline endOfWait() const;
    bool checkForOtherThreads();

    MessageStore store_;

    // Settings, read by logging calls without a lock.
    std::atomic<std::uint64_t> maxQueueSize_;
    std::atomic<std::uint64_t> waitingPeriod_; ///< in microseconds
    std::atomic<int> priority_;
    std::atomic<bool> overflowBlocks_;

    // Waiting and waking.
    WaitPoint waitPoint_;
    /// Flags of `Service`, in one word, so that a reader sees either the hold or a consumer while one
    /// consumer is replaced by another.
    std::atomic<unsigned> service_{0};
    std::atomic<bool> isAwaited_{false}; ///< a thread waits for the consumer to take what is queued
    std::atomic<bool> isWoken_{false};   ///< the consumer must end its wait
    std::atomic<bool> isOnCall_{false};  ///< the consumer sleeps until there is a message
    Deadline nextLivenessCheck_{std::chrono::seconds(0)}; ///< for other threads; used by the consumer

    DiscardedLines lines_;
};

} // namespace Log
} // namespace ZAV
