#include "log/async/MessageQueue.h"

#include "log/layout/ShownMessage.h"
#include "log/reentrancy/ThreadRecord.h"

#include <new>

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

// The logging call's side

/// The settings are read without the monitor, since a bad one is shown on a standard error that may log.
void MessageQueue::configure(const Util::Properties& properties) {
    DispatcherSettings settings = presentSettings();
    settings.read(properties);
    const QueueMonitorLock lock(queueMonitor_);
    const bool waitsWithoutLimit = deliversPromptly();
    const Time before = settings_.waitingPeriod;
    settings_ = settings;
    if (waitsWithoutLimit || settings_.waitingPeriod < before || isAwaited_) {
        wakeConsumer(); // out of a wait that the new settings would not make, or not for as long
    }
}

DispatcherSettings MessageQueue::presentSettings() {
    const QueueMonitorLock lock(queueMonitor_);
    return settings_;
}

void MessageQueue::append(const MessageFields& message, bool mayWait) {
    const QueueMonitorLock lock(queueMonitor_);
    if (mayWait && settings_.overflowBlocks) {
        waitForRoom();
    }
    messageQueue_.append(message, threadRecord().answeredReports);
    numbers_.addQueued();
    askForMemory();
    const std::uint64_t size = messageQueue_.size();
    if (wakesConsumer(size)) {
        wakeConsumer();
    }
    if (closed_ || (size >= settings_.maxQueueSize && !mayExceedLimit(mayWait))) {
        discardOldest();
    }
}

void MessageQueue::waitForRoom() {
    while (isFull() && consumer_ == TAKES_MESSAGES) {
        callConsumer();
        queueMonitor_.wait();
    }
}

/// A limit of 0 or 1 leaves room for no message at all, and nothing to wait for.
bool MessageQueue::isFull() const {
    return settings_.maxQueueSize > 1 && messageQueue_.size() + 1 >= settings_.maxQueueSize;
}

/// \return whether the call should wait for room but must not, since the consumer may need the lock it holds
bool MessageQueue::mayExceedLimit(bool mayWait) const {
    return mayWait && settings_.overflowBlocks && settings_.maxQueueSize > 1 && consumer_ == IS_AWAY;
}

/// Only the message that fills the first half wakes the consumer, not every message behind it.
bool MessageQueue::wakesConsumer(std::uint64_t size) const {
    return size == settings_.maxQueueSize / 2 || (deliversPromptly() && size == 1);
}

bool MessageQueue::deliversPromptly() const {
    return settings_.waitingPeriod == Time();
}

/// Whoever reads standard error may log what is shown, and so discard the next message while this one is
/// being shown, and so on. The last of such a chain is only counted, or it would never end.
void MessageQueue::discardOldest() noexcept {
    const char* const reason = closed_ ? SHOWN_AT_PROCESS_END : SHOWN_WHEN_DISCARDED;
    const std::string line = shownLine(reason, messageQueue_.front());
    messageQueue_.removeFront();
    numbers_.addDiscarded(1);
    if (nestedShows_ < MOST_NESTED_SHOWS) {
        ++nestedShows_;
        showLine(line, reason);
        --nestedShows_;
    }
}

void MessageQueue::showAll(const MessageBatch& batch) noexcept {
    MessageBatch::Reader messages(batch);
    while (messages.hasNext()) {
        showOnStandardError(SHOWN_AT_PROCESS_END, messages.next());
    }
}

// Waiting for the consumer

bool MessageQueue::flush(Time timeout) {
    const QueueMonitorLock lock(queueMonitor_);
    const std::uint64_t last = numbers_.last();
    const Deadline deadline(timeout);
    while (!isDone(last)) {
        if (consumer_ == NO_CONSUMER) {
            return false;
        }
        callConsumer(); // however short the time is
        if (deadline.isOver()) {
            return false;
        }
        deadline.wait(queueMonitor_);
    }
    return true;
}

/// One notification is enough until the consumer comes; otherwise the waiting threads would keep waking each
/// other.
void MessageQueue::callConsumer() {
    if (!isAwaited_) {
        isAwaited_ = true;
        wakeConsumer();
    }
}

/// It has no effect on a consumer that is not waiting.
void MessageQueue::wakeConsumer() {
    isWoken_ = true;
    queueMonitor_.notify();
}

/// \return whether that message and all before it were delivered or discarded
bool MessageQueue::isDone(std::uint64_t number) const {
    const std::uint64_t oldest = oldestTaken_ != 0 ? oldestTaken_ : numberOfFront();
    return oldest > number;
}

/// \return the number of the oldest message in the queue, or the one that the next message will have
std::uint64_t MessageQueue::numberOfFront() const {
    return numbers_.last() - messageQueue_.size() + 1;
}

// The consumer's side

void MessageQueue::consumerStarts() {
    const QueueMonitorLock lock(queueMonitor_);
    consumer_ = TAKES_MESSAGES;
}

void MessageQueue::consumerEnds() noexcept {
    const QueueMonitorLock lock(queueMonitor_);
    consumer_ = NO_CONSUMER;
    queueMonitor_.notify();
}

/// Waits before it looks at the queue, so that messages are written in batches; only prompt delivery looks
/// first, since it waits without a limit.
void MessageQueue::wait(const std::atomic<bool>& stopped) {
    const QueueMonitorLock lock(queueMonitor_);
    if (stopped) {
        return;
    }
    consumer_ = TAKES_MESSAGES;
    isWoken_ = isAwaited_ || (deliversPromptly() && messageQueue_.size() > 0);
    const Deadline deadline(settings_.waitingPeriod);
    while (!isWoken_ && !deadline.isOver()) {
        if (wantsMemory_) {
            addMemory();
        } else {
            deadline.wait(queueMonitor_);
        }
    }
}

MessageBatch MessageQueue::takeBatch() {
    const QueueMonitorLock lock(queueMonitor_);
    return takeAll();
}

MessageBatch MessageQueue::takeAll() {
    MessageBatch batch;
    if (messageQueue_.size() > 0) {
        oldestTaken_ = numberOfFront();
        batch.swap(messageQueue_);
    }
    if (isAwaited_) {
        isAwaited_ = false;
        queueMonitor_.notify(); // those who wait for room
    }
    return batch;
}

void MessageQueue::endDelivery(MessageBatch& batch, bool isDelivered) noexcept {
    MessageBlocks unused; // freed after the monitor is released
    const QueueMonitorLock lock(queueMonitor_);
    if (oldestTaken_ == 0) {
        return; // nothing was taken
    }
    if (isDelivered) {
        numbers_.addDelivered(batch.size());
    } else {
        numbers_.addDiscarded(batch.size());
    }
    oldestTaken_ = 0;
    unused = batch.takeBlocks();
    messageQueue_.addSpares(unused);
    if (consumer_ == TAKES_MESSAGES && threadRecord().putOffMessages > 0) {
        consumer_ = IS_AWAY;
    }
    queueMonitor_.notify();
}

void MessageQueue::stop(std::atomic<bool>& stopped) {
    const QueueMonitorLock lock(queueMonitor_);
    stopped = true;
    if (consumer_ != NO_CONSUMER) {
        consumer_ = ENDS;
    }
    wakeConsumer();
}

MessageBatch MessageQueue::close() {
    const QueueMonitorLock lock(queueMonitor_);
    closed_ = true;
    return takeAll();
}

int MessageQueue::priority() {
    const QueueMonitorLock lock(queueMonitor_);
    return settings_.priority;
}

// Memory

/// Has the consumer make some more, if it waits for messages. While it delivers them it has no time for that:
/// what the calls would save, the delivery would lose.
void MessageQueue::askForMemory() {
    if (messageQueue_.wantsSpare() && !wantsMemory_) {
        wantsMemory_ = true;
        queueMonitor_.notify();
    }
}

/// Makes one block, and releases the monitor meanwhile. If there is no memory, the next logging call asks
/// again.
void MessageQueue::addMemory() noexcept {
    wantsMemory_ = false;
    queueMonitor_.unlock();
    makeSpare();
    queueMonitor_.lock();
    const Platform::ScopedLock lock(memoryLock_);
    if (!madeSpare_.empty()) {
        messageQueue_.addSpares(madeSpare_);
        wantsMemory_ = messageQueue_.wantsSpare();
    }
}

void MessageQueue::makeSpare() noexcept {
    const Platform::ScopedLock lock(memoryLock_);
    try {
        madeSpare_ = MessageBatch::makeSpare();
    } catch (const std::bad_alloc&) {
        return;
    }
}

// In a forked child

void MessageQueue::renewInChild() {
    MessageBatch parents;
    parents.swap(messageQueue_);
    numbers_.forgetWaiting();
    oldestTaken_ = 0;
    consumer_ = NO_CONSUMER;
    isAwaited_ = false;
    isWoken_ = false;
    queueMonitor_.renewInChild();
}

} // namespace Log
} // namespace ZAV
