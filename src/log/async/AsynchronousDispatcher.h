#pragma once

#include "log/async/AsynchronousAppenders.h"
#include "log/async/ConsumerThread.h"
#include "log/async/MessageQueue.h"
#include "platform/CriticalSection.h"

#include <atomic>

namespace ZAV {
namespace Log {

/// The process-wide road from loggers to asynchronous appenders: a bounded queue and one consumer thread,
/// which runs while at least one asynchronous appender is registered. All operations may be called from any
/// thread.
class AsynchronousDispatcher {
public:
    /// Never destroyed, since threads may still log while the process ends.
    static AsynchronousDispatcher& instance();

    /// Reads the keys `zav.log.AsynchronousDispatcher.*`. Settings without a key keep their values.
    void configure(const Util::Properties& properties);

    /// Has the consumer write to an appender, and starts it if it does not run.
    /// \param appender not owned; must live until it was unregistered
    void registerAsynchronousAppender(Appender* appender);

    /// Removes every entry of an appender, and stops the consumer when none is left. Once it returns, the
    /// appender is not called any more.
    void unregisterAsynchronousAppender(Appender* appender);

    /// Queues a message for the consumer.
    /// \param mayWait whether to wait for room in a full queue, if that is configured
    /// \throw std::bad_alloc if there is no memory for the message, which is then not queued
    void enqueue(const MessageFields& message, bool mayWait);

    /// Waits until what is queued was delivered or discarded.
    /// \param timeout 0 for no limit
    /// \return false if messages still wait: the time is over, or the wait could have no end
    bool flush(Util::TimeUtils::Time timeout);

    /// \return the numbers of the queue; `failed` is not counted here
    LogStatistics statistics() const { return queue_.statistics(); }

    /// Stops the consumer thread, if it runs, after the round that it is in.
    void stop();

private:
    AsynchronousDispatcher();

    void startConsumer() ZAV_LOG_REQUIRES(threadLock_);
    void startWantedConsumer(bool mayWait) noexcept ZAV_LOG_EXCLUDES(threadLock_);
    void endWithProcess() noexcept;
    void beginInChild() noexcept;

    MessageQueue queue_;
    AsynchronousAppenders appenders_;
    Platform::CriticalSection threadLock_;
    ConsumerThreadPtr consumerThread_ ZAV_LOG_GUARDED_BY(threadLock_);
    /// In a forked child, whose parent had a consumer: the first message starts the child's own.
    std::atomic<bool> wantsConsumer_{false};
    /// In a forked child: the parent's consumer, which does not run here and is not joined.
    ConsumerThreadPtr parentsConsumer_;
};

} // namespace Log
} // namespace ZAV
