#include "log/async/AsynchronousDispatcher.h"

#include "log/queuefile/StoredQueue.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Process.h"
#include "platform/Threads.h"
#include "zav-util/StandardError.h"

#include <algorithm>
#include <exception>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// Created at load time, so that the application's static objects, whose destructors may log, are destroyed
/// before the dispatcher ends.
const AsynchronousDispatcher& madeAtLoad = AsynchronousDispatcher::instance();

} // namespace

AsynchronousDispatcher::AsynchronousDispatcher() {
    // Called in reverse order of registration.
    Platform::atProcessEnd([] { instance().awaitEnd(); });
    Platform::atProcessEnd([] { instance().endWithProcess(); });
    Platform::atFork(nullptr, [] { instance().beginInChild(); });
}

// The queue's file

/// While messages of earlier processes wait, no delivery begins, and messages that an appender logs while
/// being created do not wait for one.
void AsynchronousDispatcher::init(const Util::Properties& properties,
                                  const std::function<void()>& makeAppenders) {
    QueueFile* const file = files_.open(properties);
    queue_.keepIn(file);
    if (file == nullptr || file->earlier() == nullptr) {
        makeAppenders();
        configure(properties);
        return;
    }
    const LibraryCall call;
    const ScopedLock lock(appenders_.deliveryLock());
    makeAppenders();
    configure(properties);
    const Recovery recovery = appenders_.recover(*file);
    recovered_ += recovery.messages;
    if (recovery.isAllGiven() || file->earlier()->messages().empty()) {
        file->forgetEarlier();
        queue_.keepIn(queue_.file()); // the file may have had no room for its marks
    }
}

Recovery AsynchronousDispatcher::recover(QueueFile& file) {
    const LibraryCall call;
    return appenders_.recover(file);
}

DispatcherSettings AsynchronousDispatcher::settingsBy(const Util::Properties& properties) const {
    files_.refuseChange(properties);
    return queue_.settings().renewedBy(properties);
}

// Called by loggers and the application

LogStatistics AsynchronousDispatcher::statistics() const {
    LogStatistics statistics = queue_.statistics();
    statistics.recovered = recovered_;
    statistics.queued += statistics.recovered;
    statistics.delivered += statistics.recovered;
    return statistics;
}

void AsynchronousDispatcher::enqueue(const MessageFields& message, bool mayWaitForRoom) {
    queue_.append(message, mayWaitForRoom);
    if (state_.load(std::memory_order_relaxed) == WANTED) {
        startIfWanted(false);
    }
}

bool AsynchronousDispatcher::flush(Util::TimeUtils::Time timeout) {
    // Inside an appender or a listener, this thread may hold a lock that the consumer waits for, or be the
    // consumer.
    if (LibraryCall::isOpen()) {
        return statistics().waiting == 0;
    }
    startIfWanted(true);
    return queue_.flush(timeout);
}

// The consumer's lifetime

void AsynchronousDispatcher::registerAsynchronousAppender(Appender* appender,
                                                          AsynchronousAppenders::IsListed isListed) {
    appenders_.add(appender, isListed);
    if (LibraryCall::isOpen()) { // another thread may be joining the consumer, which waits for a lock of this
                                 // thread
        change({ABSENT}, WANTED);
        startIfWanted(false);
        return;
    }
    const ScopedLock lock(threadLock_);
    try {
        if (!consumerThread_) {
            start();
        }
    } catch (...) {
        appenders_.remove(appender); // its owner will destroy it now
        throw;
    }
}

void AsynchronousDispatcher::unregisterAsynchronousAppender(Appender* appender) {
    const bool noneLeft = appenders_.remove(appender);
    if (noneLeft && !LibraryCall::isOpen()) {
        const ScopedLock lock(threadLock_);
        if (appenders_.isEmpty()) { // unless another thread has just registered one
            stop();
        }
    }
}

bool AsynchronousDispatcher::drain(const Deadline& deadline) {
    startIfWanted(true);
    return queue_.drain(deadline);
}

/// A consumer that is ending may be in a delivery. If the process ends, the ending thread delivers the rest
/// and replaces the appenders.
void AsynchronousDispatcher::awaitHold() {
    startIfWanted(true);
    queue_.awaitHold();
    stateWaitPoint_.wait(Deadline(),
                         [this] { return end_ == DONE || (end_ == NOT_BEGUN && state_ != ENDING); });
}

void AsynchronousDispatcher::exchangeConfigured(bool needsNewConsumer) {
    appenders_.exchangeConfigured();
    const bool hasNone = appenders_.isEmpty();
    if (hasNone || needsNewConsumer || state_ == ENDED) {
        stop();
    }
    if (!hasNone) {
        change({ABSENT}, WANTED);
        startIfWanted(true);
    }
}

/// Wakes the threads that wait for room or in `flush`.
/// \return false if the current state is not in `from`
bool AsynchronousDispatcher::change(std::initializer_list<State> from, State to) {
    const ScopedLock lock(stateLock_);
    if (std::find(from.begin(), from.end(), state_.load()) == from.end()) {
        return false;
    }
    state_ = to;
    queue_.setServed(to == RUNNING);
    return true;
}

/// No effect once the process ends.
void AsynchronousDispatcher::start() {
    Platform::keepLibraryLoaded();
    const Platform::NoSignals noSignals;
    const State before = state_;
    if (!change({ABSENT, WANTED}, RUNNING)) {
        return;
    }
    try {
        consumerThread_ = std::make_unique<Worker>(runConsumer);
    } catch (...) {
        change({RUNNING}, before);
        throw;
    }
}

/// If the thread cannot be started now, the next message retries.
/// \param waitsForThread whether to wait for another thread that is starting or stopping it; with a logger's
///        lock held, that could deadlock
void AsynchronousDispatcher::startIfWanted(bool waitsForThread) noexcept {
    if (state_ != WANTED) {
        return;
    }
    if (waitsForThread) {
        threadLock_.lock();
    } else if (!threadLock_.tryLock()) {
        return;
    }
    const ScopedLock lock(threadLock_, Platform::ADOPT_LOCK);
    try {
        if (state_ == WANTED) {
            start();
        }
    } catch (const std::exception&) {
        return;
    }
}

/// For an appender registered meanwhile from inside another one, the next message starts a consumer.
void AsynchronousDispatcher::stop() {
    const Platform::NoCancellation noCancellation; // a cancelled call would leave the thread unjoined
    const ScopedLock lock(threadLock_);
    if (consumerThread_) {
        change({RUNNING}, ENDING);
        consumerThread_->join();
        consumerThread_.reset();
    }
    change({WANTED, ENDED}, ABSENT);
    if (appenders_.hasApplicationAppender()) {
        change({ABSENT}, WANTED);
    }
}

void AsynchronousDispatcher::finishConfigured() {
    if (state_ == RUNNING && appenders_.hasApplicationAppender()) {
        queue_.flush(Util::TimeUtils::Time());
    } else {
        stop();
    }
}

// The consumer's thread

/// An exception, for example because the priority cannot be set, ends only this thread.
void AsynchronousDispatcher::runConsumer() {
    AsynchronousDispatcher& dispatcher = instance();
    const unsigned generation = Platform::forkGeneration();
    threadRecord().isConsumer = true;
    try {
        dispatcher.makeRounds();
    } catch (const std::exception& exception) {
        Util::writeErrorLine(UNCAUGHT_IN_CONSUMER, exception.what());
    }
    threadRecord().isConsumer = false;
    if (generation == Platform::forkGeneration()) {
        dispatcher.change({RUNNING}, ENDING);
        { const LibraryCall call; } // writes what is still deferred: nothing waits for this thread any more
        dispatcher.change({ENDING}, ENDED);
        dispatcher.stateWaitPoint_.notifyAll();
    }
}

/// A consumer stopped before its first round still makes that round at once, so that everything queued by
/// then is written as if the consumer had been waiting already.
void AsynchronousDispatcher::makeRounds() {
    const unsigned generation = Platform::forkGeneration();
    MessageBatch batch;
    int priority = DEFAULT_PRIORITY_MARK;
    queue_.prepareMemory();
    bool hasOtherThreads = true; // false: the process ends when this thread does
    do {
        applyPriority(priority);
        hasOtherThreads = queue_.wait();
        applyPriority(priority);
        deliverRound(batch);
    } while (hasOtherThreads && state_ == RUNNING && generation == Platform::forkGeneration());
}

/// The priority may be configured after the thread has started, and is in force when messages are written. It
/// is set while no batch is taken, since failing ends the thread. A thread cannot return to the priority it
/// was created with.
void AsynchronousDispatcher::applyPriority(int& applied) const {
    const int priority = queue_.priority();
    if (priority == applied || priority == DEFAULT_PRIORITY_MARK) {
        return;
    }
    const int error = Platform::setCurrentThreadPriority(priority);
    if (error != 0) {
        throw Worker::priorityFailure(error);
    }
    applied = priority;
}

/// If an appender or a listener forks, the batch belongs to the parent, and the child does not finish the
/// delivery. At the end of the `LibraryCall`, and so of the round, the thread writes the messages that its
/// appenders and listeners deferred.
void AsynchronousDispatcher::deliverRound(MessageBatch& batch) {
    const unsigned generation = Platform::forkGeneration();
    const LibraryCall call; // a message logged during allocation must not wait for a logger either
    queue_.take(batch);
    const bool isDelivered = appenders_.deliver(batch, queue_.file());
    if (generation == Platform::forkGeneration()) {
        queue_.release(batch, isDelivered);
    }
}

} // namespace Log
} // namespace ZAV
