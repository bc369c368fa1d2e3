#pragma once

#include "log/async/DispatcherSettings.h"
#include "log/async/MessageBatch.h"
#include "log/async/QueueMonitor.h"

#include <atomic>

namespace ZAV {
namespace Log {

/// The messages that wait for the consumer thread, oldest first. All operations may be called from any
/// thread.
class MessageQueue {
public:
    /// Takes the dispatcher's settings from the properties; they hold from the next message or wait on.
    void configure(const Util::Properties& properties);

    /// Appends a message; never waits for an appender. When the queue has reached its limit, or was closed,
    /// the oldest message leaves it and is shown on the standard error stream.
    void append(const LogMessage& message);

    /// Waits for the waiting period, or until the queue is half full, or until `stop` is called.
    /// \param stopped the flag that was given to `stop`; if it is set already there is no wait
    void wait(const std::atomic<bool>& stopped);

    /// Empties the queue.
    /// \return what it held
    MessageBatch takeBatch();

    /// Sets a consumer's flag and wakes it.
    void stop(std::atomic<bool>& stopped);

    /// Empties the queue for the last time: from now on every message is shown on the standard error stream
    /// instead, since no consumer will come for it.
    MessageBatch close();

    /// Shows a message on the standard error stream in place of its delivery.
    static void discard(const LogMessage& message);

    /// \return the priority that the consumer thread shall have, or `DEFAULT_PRIORITY_MARK`
    int priority();

private:
    bool wakesConsumer(std::uint64_t size) const ZAV_LOG_REQUIRES(queueMonitor_);
    bool deliversPromptly() const ZAV_LOG_REQUIRES(queueMonitor_);

    QueueMonitor queueMonitor_;
    MessageBatch messageQueue_ ZAV_LOG_GUARDED_BY(queueMonitor_);
    DispatcherSettings settings_ ZAV_LOG_GUARDED_BY(queueMonitor_);
    bool closed_ ZAV_LOG_GUARDED_BY(queueMonitor_) = false;
};

} // namespace Log
} // namespace ZAV
