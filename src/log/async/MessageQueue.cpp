#include "log/async/MessageQueue.h"

#include "log/LogLine.h"
#include "zav-util/StandardError.h"

namespace ZAV {
namespace Log {

void MessageQueue::configure(const Util::Properties& properties) {
    const QueueMonitorLock lock(queueMonitor_);
    const bool waitsWithoutLimit = deliversPromptly();
    const Util::TimeUtils::Time before = settings_.waitingPeriod;
    settings_.read(properties);
    if (waitsWithoutLimit || settings_.waitingPeriod < before) {
        queueMonitor_.notify(); // out of a wait that is longer than the ones to come
    }
}

void MessageQueue::append(const LogMessage& message) {
    const QueueMonitorLock lock(queueMonitor_);
    messageQueue_.append(message);
    const std::uint64_t size = messageQueue_.size();
    if (wakesConsumer(size)) {
        queueMonitor_.notify();
    }
    if (size >= settings_.maxQueueSize || closed_) {
        discard(messageQueue_.removeFront());
    }
}

/// Only the message that fills the first half wakes the consumer, not every message behind it.
bool MessageQueue::wakesConsumer(std::uint64_t size) const {
    return size == settings_.maxQueueSize / 2 || (deliversPromptly() && size == 1);
}

bool MessageQueue::deliversPromptly() const {
    return settings_.waitingPeriod == Util::TimeUtils::Time();
}

void MessageQueue::discard(const LogMessage& message) {
    Util::writeErrorLine("Message queue size reached. Discarding oldest log message: " +
                         formatLogLine(message));
}

/// Waits before it looks at the queue, so that messages are written in batches; only prompt delivery looks
/// first, since it waits without a limit.
void MessageQueue::wait(const std::atomic<bool>& stopped) {
    const QueueMonitorLock lock(queueMonitor_);
    if (stopped) {
        return;
    }
    if (!deliversPromptly()) {
        queueMonitor_.timedWait(settings_.waitingPeriod);
    } else if (messageQueue_.size() == 0) {
        queueMonitor_.wait();
    }
}

MessageBatch MessageQueue::takeBatch() {
    MessageBatch batch;
    const QueueMonitorLock lock(queueMonitor_);
    batch.swap(messageQueue_);
    return batch;
}

void MessageQueue::stop(std::atomic<bool>& stopped) {
    const QueueMonitorLock lock(queueMonitor_);
    stopped = true;
    queueMonitor_.notify();
}

MessageBatch MessageQueue::close() {
    MessageBatch batch;
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
