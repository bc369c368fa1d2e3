#include "log/async/MessageQueue.h"

#include "log/LogLine.h"
#include "log/LogMessage.h"
#include "zav-util/StandardError.h"

#include <utility>

namespace ZAV {
namespace Log {

void MessageQueue::configure(const Util::Properties& properties) {
    const QueueMonitorLock lock(queueMonitor_);
    settings_.read(properties);
}

void MessageQueue::append(std::unique_ptr<const LogMessage> message) {
    boost::shared_ptr<const LogMessage> shared(std::move(message));
    const QueueMonitorLock lock(queueMonitor_);
    messageQueue_.push_back(std::move(shared));
    const std::uint64_t size = messageQueue_.size();
    if (wakesConsumer(size)) {
        queueMonitor_.notify();
    }
    if (size >= settings_.maxQueueSize || closed_) {
        discardOldest();
    }
}

/// Only the message that fills the first half wakes the consumer, not every message behind it.
bool MessageQueue::wakesConsumer(std::uint64_t size) const {
    return size == settings_.maxQueueSize / 2 || (deliversPromptly() && size == 1);
}

bool MessageQueue::deliversPromptly() const {
    return settings_.waitingPeriod == Util::TimeUtils::Time();
}

void MessageQueue::discardOldest() {
    const boost::shared_ptr<const LogMessage> oldest = messageQueue_.front();
    messageQueue_.pop_front();
    discard(*oldest);
}

void MessageQueue::discard(const LogMessage& message) {
    Util::writeErrorLine("Message queue size reached. Discarding oldest log message: " +
                         formatLogLine(message));
}

MessageQueue::Batch MessageQueue::waitForBatch(const std::atomic<bool>& stopped) {
    Batch batch;
    const QueueMonitorLock lock(queueMonitor_);
    if (!stopped) {
        waitForMessages();
    }
    batch.swap(messageQueue_);
    return batch;
}

/// Waits before it looks at the queue, so that messages are written in batches; only prompt delivery looks
/// first, since it waits without a limit.
void MessageQueue::waitForMessages() {
    if (!deliversPromptly()) {
        queueMonitor_.timedWait(settings_.waitingPeriod);
    } else if (messageQueue_.empty()) {
        queueMonitor_.wait();
    }
}

void MessageQueue::stop(std::atomic<bool>& stopped) {
    const QueueMonitorLock lock(queueMonitor_);
    stopped = true;
    queueMonitor_.notify();
}

MessageQueue::Batch MessageQueue::close() {
    Batch batch;
    const QueueMonitorLock lock(queueMonitor_);
    closed_ = true;
    batch.swap(messageQueue_);
    return batch;
}

int MessageQueue::priority() {
    const QueueMonitorLock lock(queueMonitor_);
    return settings_.priority;
}

} // namespace Log
} // namespace ZAV
