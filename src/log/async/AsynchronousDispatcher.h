#pragma once

#include "log/async/AsynchronousAppenders.h"
#include "log/async/MessageQueue.h"
#include "platform/CriticalSection.h"
#include "platform/Process.h"

#include <atomic>
#include <functional>
#include <initializer_list>
#include <memory>
#include <thread>
#include <vector>

namespace ZAV {
namespace Log {

/// Dispatches messages from loggers to asynchronous appenders, process-wide: the queue, and one consumer
/// thread, which in each round takes a batch of queued messages and delivers it to the appenders.
/// Thread-safe.
class AsynchronousDispatcher : public Platform::NeverDestroyed<AsynchronousDispatcher> {
public:
    /// Reads the keys `zav.log.AsynchronousDispatcher.*`. Settings without a key are unchanged.
    void configure(const Util::Properties& properties) { queue_.configure(properties); }

    /// Configures the queue and has the appenders created. They get what earlier processes have left in the
    /// queue's file before any new message.
    /// \param makeAppenders creates and registers the configured appenders
    /// \throw LogException if the file cannot be used; also what `makeAppenders` throws
    void init(const Util::Properties& properties, const std::function<void()>& makeAppenders);

    /// Delivers to the configured appenders what other processes have left in a file that the queue does not
    /// use.
    Recovery recover(QueueFile& file);

    /// Makes the consumer deliver to an appender, and starts the consumer if it is not running.
    /// \param appender not owned; must outlive its registration
    /// \param isListed called for each message: whether its logger lists the appender; null if the appender
    ///        gets all messages
    void registerAsynchronousAppender(Appender* appender, AsynchronousAppenders::IsListed isListed = nullptr);

    /// Removes every entry of an appender, and stops the consumer when none is left. After it returns, the
    /// appender is no longer called, except that it does not wait for a delivery if called inside an appender
    /// or a listener.
    void unregisterAsynchronousAppender(Appender* appender);

    // Reloading. The steps are called in this order, by one thread at a time, and not inside an appender or a
    // listener.

    /// \return the settings that a fresh process with the properties would have. An invalid value is reported
    ///         and leaves its setting unchanged.
    /// \throw LogException if the properties would change the queue's file
    DispatcherSettings settingsBy(const Util::Properties& properties) const;

    DispatcherSettings settings() const { return queue_.settings(); }

    /// Allocates the memory for the appenders that the consumer will deliver to.
    void prepareExchange(const std::vector<Appender*>& appenders) { appenders_.prepareExchange(appenders); }

    /// Waits until everything queued was delivered or discarded, unless no consumer will take it.
    /// \return false on timeout
    bool drain(const Deadline& deadline);

    /// Applies settings from the next message or wait on, except for the priority, which belongs to the
    /// consumer's thread.
    void use(const DispatcherSettings& settings) { queue_.use(settings); }

    /// Makes the consumer leave newly queued messages in the queue.
    void hold() noexcept { queue_.hold(); }

    /// Waits until the consumer has delivered everything queued before the hold.
    void awaitHold();

    /// Replaces the configured appenders with the prepared ones. A consumer that has ended, or whose priority
    /// has changed, is replaced with a new one; without appenders there is none. If the new one cannot be
    /// started now, the next message retries.
    void exchangeConfigured(bool needsNewConsumer);

    void endHold() { queue_.endHold(); }

    /// Queues a message for the consumer.
    /// \param mayWaitForRoom whether to block while the queue is full, if that is configured
    /// \throw std::bad_alloc if there is no memory for the message; it is then not queued
    void enqueue(const MessageFields& message, bool mayWaitForRoom);

    /// Waits until everything queued was delivered or discarded.
    /// \param timeout 0 for no timeout
    /// \return false if messages still wait: on timeout, or because waiting could deadlock
    bool flush(Util::TimeUtils::Time timeout);

    /// \return the queue's statistics, without `failed`
    LogStatistics statistics() const;

    /// Stops the consumer, if it is running, after its current round.
    void stop();

    /// The same, except that a consumer that the application's own appenders need makes one round and keeps
    /// running.
    void finishConfigured();

private:
    /// State of the consumer. Other threads wait for it only while it is `RUNNING`.
    enum State {
        ABSENT,  ///< no appender needs it
        WANTED,  ///< the next message starts it, as in a forked child whose parent had one
        RUNNING, ///< it waits or delivers
        ENDING,  ///< it makes its last round
        ENDED,   ///< its thread has finished and must still be joined
        OVER     ///< the process ends; no consumer is started any more
    };

    /// Progress of the end of the process.
    enum End { NOT_BEGUN, BEGUN, DONE };

    friend NeverDestroyed;
    AsynchronousDispatcher();

    bool change(std::initializer_list<State> from, State to) ZAV_LOG_EXCLUDES(stateLock_);
    void start() ZAV_LOG_REQUIRES(threadLock_);
    void startIfWanted(bool waitsForThread) noexcept ZAV_LOG_EXCLUDES(threadLock_);

    static void runConsumer();
    void makeRounds();
    void applyPriority(int& applied) const;
    void deliverRound(MessageBatch& batch);

    bool endConsumer(bool waitsForThread);
    void abandonConsumer();
    void endWithProcess() noexcept;
    void awaitEnd() noexcept;
    void beginInChild() noexcept;

    MessageQueue queue_;
    QueueFiles files_;                        ///< used only by `init` and `reload`
    std::atomic<std::uint64_t> recovered_{0}; ///< messages recovered from earlier processes
    AsynchronousAppenders appenders_;
    Platform::CriticalSection stateLock_{Platform::AWAITED_BY_FORK}; ///< held to change the state
    std::atomic<State> state_{ABSENT};                               ///< read without the lock
    WaitPoint stateWaitPoint_; ///< notified when the consumer has ended, and when the end is done
    std::atomic<End> end_{NOT_BEGUN};
    std::atomic<std::thread::id> endingThread_{std::thread::id()};

    Platform::CriticalSection threadLock_; ///< held while the consumer is started, or stopped and joined
    std::unique_ptr<Worker> consumerThread_ ZAV_LOG_GUARDED_BY(threadLock_);
    // Leaked on purpose, and kept reachable for leak checkers.
    Worker* abandonedConsumer_ ZAV_LOG_GUARDED_BY(threadLock_) = nullptr; ///< detached at process end
    Worker* parentsConsumer_ ZAV_LOG_GUARDED_BY(threadLock_) = nullptr;   ///< does not run in the child
};

} // namespace Log
} // namespace ZAV
