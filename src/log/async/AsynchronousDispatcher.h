#pragma once

#include "log/async/AsynchronousAppenders.h"
#include "log/async/MessageQueue.h"
#include "log/async/QueueFiles.h"
#include "platform/CriticalSection.h"
#include "platform/NeverDestroyed.h"

#include <atomic>
#include <functional>
#include <initializer_list>
#include <memory>
#include <thread>
#include <vector>

namespace ZAV {
namespace Log {

/// The process-wide road from loggers to asynchronous appenders: the queue, and one consumer thread, which
/// takes what is queued, a batch a round, and gives it to the appenders. All operations may be called from
/// any thread.
class AsynchronousDispatcher : public Platform::NeverDestroyed<AsynchronousDispatcher> {
public:
    /// Reads the keys `zav.log.AsynchronousDispatcher.*`. Settings without a key keep their values.
    void configure(const Util::Properties& properties) { queue_.configure(properties); }

    /// Configures the queue and has the appenders made. What earlier processes have left in the queue's file
    /// goes to them before anything new.
    /// \param makeAppenders registers the appenders of the configuration
    /// \throw LogException if the file cannot be used, and what `makeAppenders` throws
    void init(const Util::Properties& properties, const std::function<void()>& makeAppenders);

    /// Gives the appenders of the configuration what other processes have left in a file that the queue does
    /// not use.
    Recovery recover(QueueFile& file);

    /// Has the consumer write to an appender, and starts it if it does not run.
    /// \param appender not owned; must live until it was unregistered
    /// \param isListed asked for each message whether its logger lists the appender; null if the appender gets
    ///        all messages
    void registerAsynchronousAppender(Appender* appender, AsynchronousAppenders::IsListed isListed = nullptr);

    /// Removes every entry of an appender, and stops the consumer when none is left. Once it returns, the
    /// appender is not called any more; only inside an appender or a listener it does not wait for that.
    void unregisterAsynchronousAppender(Appender* appender);

    // A change to another configuration. Its steps are called in this order by one thread at a time, and
    // not inside an appender or a listener.

    /// \return the settings that a fresh process with the properties would have. A bad value is reported and
    ///         leaves its setting as it is.
    /// \throw LogException if the queue would be kept elsewhere
    DispatcherSettings settingsBy(const Util::Properties& properties) const;

    DispatcherSettings settings() const { return queue_.settings(); }

    /// Takes the memory for the appenders that the consumer is to write to.
    void prepareExchange(const std::vector<Appender*>& appenders) { appenders_.prepareExchange(appenders); }

    /// Waits until all that is queued was delivered or discarded, unless no consumer comes for it.
    /// \return false if the time is over
    bool drain(const Deadline& deadline);

    /// Has settings hold from the next message or wait on, but for the priority: that is one of the
    /// consumer's thread.
    void use(const DispatcherSettings& settings) { queue_.use(settings); }

    /// Has the consumer leave what is queued from now on where it is.
    void hold() noexcept { queue_.hold(); }

    /// Waits until the consumer has delivered all that was queued before the hold.
    void awaitHold();

    /// Puts the appenders that were prepared in the place of those of the configuration. A consumer that has
    /// ended, or whose priority has changed, gives way to a new one; without appenders there is none. One
    /// that cannot be started now is tried again with the next message.
    void exchangeConfigured(bool needsNewConsumer);

    void endHold() { queue_.endHold(); }

    /// Queues a message for the consumer.
    /// \param mayWaitForRoom whether to wait for room in a full queue, if that is configured
    /// \throw std::bad_alloc if there is no memory for the message, which is then not queued
    void enqueue(const MessageFields& message, bool mayWaitForRoom);

    /// Waits until what is queued was delivered or discarded.
    /// \param timeout 0 for no limit
    /// \return false if messages still wait: the time is over, or the wait could have no end
    bool flush(Util::TimeUtils::Time timeout);

    /// \return the numbers of the queue; `failed` is not counted here
    LogStatistics statistics() const;

    /// Stops the consumer, if it runs, after the round that it is in.
    void stop();

    /// The same, but for a consumer that appenders of the application need: that one makes a round, and goes
    /// on.
    void finishConfigured();

private:
    /// What becomes of the consumer. Only while it is `RUNNING`, others wait for it.
    enum State {
        ABSENT,  ///< no appender needs it
        WANTED,  ///< the next message starts it, as in a forked child whose parent had one
        RUNNING, ///< it waits or delivers
        ENDING,  ///< it makes its last round
        ENDED,   ///< its thread is over, and is still to be joined
        OVER     ///< the process ends, and there is no other consumer
    };

    /// How far the end of the process has come.
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
    QueueFiles files_;                        ///< used by `init` and `reload` alone
    std::atomic<std::uint64_t> recovered_{0}; ///< messages of earlier processes
    AsynchronousAppenders appenders_;
    Platform::CriticalSection stateLock_{Platform::AWAITED_BY_FORK}; ///< held for one change of the state
    std::atomic<State> state_{ABSENT};                               ///< read without it
    Bell stateBell_; ///< rung when the consumer has ended, and when the end is done
    std::atomic<End> end_{NOT_BEGUN};
    std::atomic<std::thread::id> endingThread_{std::thread::id()};

    Platform::CriticalSection threadLock_; ///< held while the consumer is started, or stopped and joined
    std::unique_ptr<Worker> consumerThread_ ZAV_LOG_GUARDED_BY(threadLock_);
    // What is left alone, and kept in sight of those who look for memory that nobody knows.
    Worker* abandonedConsumer_ ZAV_LOG_GUARDED_BY(threadLock_) = nullptr; ///< nobody waits for it at the end
    Worker* parentsConsumer_ ZAV_LOG_GUARDED_BY(threadLock_) = nullptr;   ///< which does not run in the child
};

} // namespace Log
} // namespace ZAV
