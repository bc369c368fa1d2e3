#pragma once

#include "log/async/Bell.h"
#include "log/async/DiscardedLines.h"
#include "log/async/DispatcherSettings.h"
#include "log/async/MessageStore.h"

#include <atomic>
#include <cstdint>

namespace ZAV {
namespace Log {

/// The messages that wait for the consumer, oldest first.
///
/// Each thread appends to a ring of its own; one counter gives every message of the process its number, which
/// is its place in the order. A call that neither wakes, waits nor discards takes no lock. The process has
/// one queue, which is never destroyed, since threads may still log while the process ends. All operations
/// may be called from any thread.
class MessageQueue {
public:
    MessageQueue() { store(DispatcherSettings()); }

    /// Takes the dispatcher's settings from the properties; they hold from the next message or wait on.
    void configure(const Util::Properties& properties);

    DispatcherSettings settings() const;

    /// Has settings hold from the next message or wait on.
    void use(const DispatcherSettings& settings);

    /// Appends a message. When the queue has reached its limit, or was closed, the oldest message leaves it
    /// and is shown on the standard error stream.
    /// \param mayWaitForRoom whether to wait for room instead, if that is configured and a consumer makes room
    /// \throw std::bad_alloc if there is no memory for the message, which is then not queued
    void append(const MessageFields& message, bool mayWaitForRoom = false);

    /// Has the consumer take what is queued, and waits until that was delivered or discarded.
    /// \param timeout 0 for no limit
    /// \return false if the time is over, or if messages wait that no consumer comes for
    bool flush(Util::TimeUtils::Time timeout);

    /// \return the numbers of the queue; `failed` is not counted here
    LogStatistics statistics() const noexcept { return store_.statistics(); }

    /// Keeps what is appended from now on in a file.
    /// \param file must never be destroyed; null for memory
    /// \throw std::bad_alloc
    void keepIn(QueueFile* file) { store_.keepIn(file); }

    /// \return null if the queue is kept in memory
    QueueFile* file() const noexcept { return store_.file(); }

    // The consumer's side

    /// Says whether a consumer comes for the messages from now on; if not, nobody waits for it any longer.
    void setServed(bool isServed);

    /// Waits for the waiting period, or until the consumer is to come before: the queue is half full, or
    /// holds a message that is to be delivered promptly, or somebody waits for the messages, or the settings
    /// have changed, or nobody is served any longer.
    /// \return false if the process has no other thread any more, and so nobody who could log
    bool wait();

    /// Has the consumer come before its waiting period is over; without effect on one that does not wait.
    void wake();

    /// Has the consumer leave what is appended from now on in the queue, and wait there until `endHold`.
    void hold() noexcept;
    void endHold();
    bool hasHold() const noexcept { return store_.hasHold(); }

    /// Waits until all that was queued when the hold began was delivered or discarded, unless no consumer
    /// comes for it.
    void awaitHold();

    /// Has the consumer take what is queued, and waits until that was delivered or discarded, unless no
    /// consumer comes for it.
    /// \return false if the time is over
    bool drain(const Deadline& deadline);

    /// Has memory ready for what is logged next.
    void prepareMemory() noexcept { store_.prepareMemory(); }

    /// Takes out all that is queued, up to a hold; it counts as waiting until `release`. Without memory it
    /// takes nothing.
    void take(MessageBatch& batch);

    /// Gives the memory of a batch back.
    /// \param isDelivered false if there was no appender to give it to
    void release(MessageBatch& batch, bool isDelivered);

    /// \return the priority that the consumer shall have, or `DEFAULT_PRIORITY_MARK`
    int priority() const noexcept { return priority_.load(std::memory_order_relaxed); }

    // The end of the process

    /// From now on no message is kept: a call that appends one shows what is queued.
    void close();

    /// Shows all that is queued on the standard error stream.
    void showAll();

    /// Shows what a running delivery has not given to all appenders yet, and does not wait for it. What it
    /// writes until the process is gone is shown as well: rather twice than not at all.
    void showRestOfDelivery();

    /// Waits until all that was discarded is shown, as long as that goes on.
    void finishShowing() { lines_.finish(); }

    /// In a forked child: begins anew, with an empty queue and without a consumer. It takes no memory.
    void renewInChild() noexcept;

private:
    enum Service : unsigned {
        SERVED = 1, ///< a consumer waits or delivers, and is not to end
        HELD = 2    ///< there is a hold
    };

    void store(const DispatcherSettings& settings);
    bool isServed() const noexcept { return (service_ & SERVED) != 0; }
    bool willBeServed() const noexcept;
    template <typename IsServed>
    bool awaitDone(std::uint64_t last, const Deadline& deadline, const IsServed& isServed);
    bool deliversPromptly() const noexcept { return waitingPeriod_ == 0; }

    std::uint64_t appendWithRoom(const MessageFields& message);
    std::uint64_t appendToFullFile(const MessageFields& message);
    std::uint64_t discardUnfit(const MessageFields& message);
    void waitForRoom();
    void waitForDelivery(std::uint64_t done);
    bool discardIfNoneWaits(const MessageFields& message);
    void hasAppended(std::uint64_t number);
    void callConsumer();
    void discardOldest();
    Deadline endOfWait() const;
    bool lookForCompany();

    MessageStore store_;

    // The settings, which a call reads without a lock.
    std::atomic<std::uint64_t> maxQueueSize_;
    std::atomic<std::uint64_t> waitingPeriod_; ///< in microseconds
    std::atomic<int> priority_;
    std::atomic<bool> overflowBlocks_;

    // What those who wait are waiting for.
    Bell bell_;
    /// Of `Service`: one word, so that whoever looks while one consumer gives way to another sees the hold or
    /// a consumer.
    std::atomic<unsigned> service_{0};
    std::atomic<bool> isAwaited_{false}; ///< somebody waits for the consumer to take what is queued
    std::atomic<bool> isWoken_{false};   ///< the consumer is to end its wait
    std::atomic<bool> isOnCall_{false};  ///< the consumer sleeps until there is a message
    std::atomic<bool> isClosed_{false};
    Deadline nextLook_{std::chrono::seconds(0)}; ///< for other threads of the process; used by the consumer

    DiscardedLines lines_;
};

} // namespace Log
} // namespace ZAV
