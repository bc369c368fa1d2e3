#pragma once

#include "log/async/AsynchronousAppenders.h"
#include "log/async/ConsumerThread.h"
#include "log/async/MessageQueue.h"
#include "platform/CriticalSection.h"

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
    void enqueue(const LogMessage& message);

    /// Stops the consumer thread, if it runs, after the round that it is in.
    void stop();

private:
    AsynchronousDispatcher();

    void stopConsumer() ZAV_LOG_REQUIRES(threadLock_);
    bool isInForkedChild() ZAV_LOG_EXCLUDES(threadLock_);
    void endWithProcess() noexcept;

    MessageQueue queue_;
    AsynchronousAppenders appenders_;
    Platform::CriticalSection threadLock_;
    ConsumerThreadPtr consumerThread_ ZAV_LOG_GUARDED_BY(threadLock_);
    int consumerProcess_ ZAV_LOG_GUARDED_BY(threadLock_) = 0; ///< id of the process that started the thread
};

} // namespace Log
} // namespace ZAV
