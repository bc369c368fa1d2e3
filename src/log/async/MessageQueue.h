#pragma once

#include "log/async/Deadline.h"
#include "log/async/DispatcherSettings.h"
#include "log/async/MessageBatch.h"
#include "log/async/QueueMonitor.h"
#include "log/async/QueueNumbers.h"
#include "platform/CriticalSection.h"

#include <atomic>

namespace ZAV {
namespace Log {

/// The messages that wait for the consumer thread, oldest first. All operations may be called from any
/// thread.
class MessageQueue {
public:
    /// Takes the dispatcher's settings from the properties; they hold from the next message or wait on.
    void configure(const Util::Properties& properties);

    /// Appends a message. It waits for no appender, unless it may wait for room. When the queue has reached
    /// its limit, or was closed, the oldest message leaves it and is shown on the standard error stream.
    /// \param mayWait whether to wait for room instead, if that is configured and a consumer makes room
    /// \throw std::bad_alloc if there is no memory for the message, which is then not queued
    void append(const MessageFields& message, bool mayWait = false);

    /// Has the consumer take what is queued, and waits until that was delivered or discarded.
    /// \param timeout 0 for no limit
    /// \return false if the time is over, or if messages wait that no consumer comes for
    bool flush(Util::TimeUtils::Time timeout);

    LogStatistics statistics() const { return numbers_.statistics(); }

    /// Empties the queue for the last time: from now on every message is shown on the standard error stream
    /// instead, since no consumer will come for it.
    MessageBatch close();

    // The consumer's side

    /// Says that a consumer will come for the messages from now on.
    void consumerStarts();

    /// Says that the consumer comes no more; nobody waits for it any longer.
    void consumerEnds() noexcept;

    /// Waits for the waiting period, or until somebody wakes the consumer: the queue is half full, or holds a
    /// message that is to be delivered promptly, or somebody waits for the messages, or the consumer is to
    /// stop or to take other settings. Meanwhile it makes memory for them.
    /// \param stopped the flag that was given to `stop`; if it is set already there is no wait
    void wait(const std::atomic<bool>& stopped);

    /// Empties the queue; what it held counts as waiting until `endDelivery`.
    MessageBatch takeBatch();

    /// Shows the messages of a batch on the standard error stream in place of their delivery, since the
    /// process ends.
    static void showAll(const MessageBatch& batch) noexcept;

    /// Says what became of the batch that was taken last. If the calling thread has put messages off, no
    /// logging call waits for room until the next `wait`: the thread may need the lock that such a call
    /// holds.
    /// \param isDelivered false if there was no appender to give it to
    /// \param batch is emptied: its memory serves the next messages
    void endDelivery(MessageBatch& batch, bool isDelivered) noexcept;

    /// Sets a consumer's flag and wakes it.
    void stop(std::atomic<bool>& stopped);

    /// \return the priority that the consumer thread shall have, or `DEFAULT_PRIORITY_MARK`
    int priority();

    // Around a fork, which happens with the monitor locked

    bool tryLockForFork() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS { return queueMonitor_.tryLock(); }
    void lockForFork() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS { queueMonitor_.lock(); }
    void unlockInParent() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS { queueMonitor_.unlock(); }

    /// Begins anew, with an empty queue and without a consumer. The monitor is free then, unless the thread
    /// was in a call of the queue when it forked.
    void renewInChild() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS;

private:
    enum Consumer {
        NO_CONSUMER,
        TAKES_MESSAGES, ///< it is waiting or delivering, and will make room
        IS_AWAY,        ///< it may be waiting for a lock that a logging call holds
        ENDS            ///< it is in its last round
    };

    static constexpr int MOST_NESTED_SHOWS = 8;

    DispatcherSettings presentSettings() ZAV_LOG_EXCLUDES(queueMonitor_);
    void callConsumer() ZAV_LOG_REQUIRES(queueMonitor_);
    void waitForRoom() ZAV_LOG_REQUIRES(queueMonitor_);
    bool isFull() const ZAV_LOG_REQUIRES(queueMonitor_);
    bool mayExceedLimit(bool mayWait) const ZAV_LOG_REQUIRES(queueMonitor_);
    void discardOldest() noexcept ZAV_LOG_REQUIRES(queueMonitor_);
    bool wakesConsumer(std::uint64_t size) const ZAV_LOG_REQUIRES(queueMonitor_);
    bool deliversPromptly() const ZAV_LOG_REQUIRES(queueMonitor_);
    bool isDone(std::uint64_t number) const ZAV_LOG_REQUIRES(queueMonitor_);
    std::uint64_t numberOfFront() const ZAV_LOG_REQUIRES(queueMonitor_);
    MessageBatch takeAll() ZAV_LOG_REQUIRES(queueMonitor_);
    void wakeConsumer() ZAV_LOG_REQUIRES(queueMonitor_);
    void askForMemory() ZAV_LOG_REQUIRES(queueMonitor_);
    void addMemory() noexcept ZAV_LOG_REQUIRES(queueMonitor_);
    void makeSpare() noexcept;

    QueueMonitor queueMonitor_;
    MessageBatch messageQueue_ ZAV_LOG_GUARDED_BY(queueMonitor_);
    DispatcherSettings settings_ ZAV_LOG_GUARDED_BY(queueMonitor_);
    QueueNumbers numbers_; ///< changed under the monitor, read without it
    /// Of the oldest message that is being delivered; 0 if none is. Messages are numbered as they are queued.
    std::uint64_t oldestTaken_ ZAV_LOG_GUARDED_BY(queueMonitor_) = 0;
    Consumer consumer_ ZAV_LOG_GUARDED_BY(queueMonitor_) = NO_CONSUMER;
    bool isAwaited_ ZAV_LOG_GUARDED_BY(queueMonitor_) = false; ///< somebody waits for the queue to be emptied
    bool isWoken_ ZAV_LOG_GUARDED_BY(queueMonitor_) = false;   ///< the consumer is to end its wait
    bool closed_ ZAV_LOG_GUARDED_BY(queueMonitor_) = false;
    int nestedShows_ ZAV_LOG_GUARDED_BY(queueMonitor_) = 0; ///< discarded messages that are being shown
    /// A fork waits for it until the memory is made. It is never held while the monitor is waited for.
    Platform::CriticalSection memoryLock_{Platform::AWAITED_BY_FORK};
    /// Made and not added yet. Not on the consumer's stack, which a forked child does not have.
    MessageBlocks madeSpare_ ZAV_LOG_GUARDED_BY(memoryLock_);
    bool wantsMemory_ ZAV_LOG_GUARDED_BY(queueMonitor_) = true;
};

} // namespace Log
} // namespace ZAV
