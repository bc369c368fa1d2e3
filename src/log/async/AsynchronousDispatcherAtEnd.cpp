// The asynchronous dispatcher at the end of the process, and in a forked child.

#include "log/async/AsynchronousDispatcher.h"

#include "log/commands/CommandBus.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Threads.h"

#include <thread>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// How long the end of the process waits for a consumer that makes no progress.
constexpr std::chrono::seconds MAX_STALL_TIME{2};

} // namespace

/// Writes what is still queued when the process ends without `LogManager::finish`. The application's
/// listeners may already be destroyed.
///
/// A thread that ends the process from inside an appender or a listener holds locks that the consumer may be
/// waiting for; the messages are then shown on the standard error stream instead, and so are those that a
/// stalled consumer has not written.
void AsynchronousDispatcher::endWithProcess() noexcept {
    const Platform::NoCancellation noCancellation;
    const bool mayDeliver = !LibraryCall::isOpen();
    const LibraryCall call;
    endingThread_ = std::this_thread::get_id();
    end_ = BEGUN;
    CommandBus::instance().forgetListeners();
    Dispatch::showOpen();
    if (!mayDeliver) {
        queue_.close(); // so that the consumer does not take what is shown here
    }
    const bool hasEnded = endConsumer(mayDeliver);
    if (hasEnded && queue_.hasHold()) { // messages after the hold are for the new appenders
        appenders_.exchangeEntries();
        queue_.endHold();
    }
    if (hasEnded && !appenders_.isEmpty()) {
        MessageBatch batch;
        deliverRound(batch);
    }
    queue_.close();
    queue_.showRestOfDelivery();
    queue_.showAll();
    DeferredMessages::instance().showAll();
    queue_.finishShowing();
    abandonConsumer();
    end_ = DONE;
    stateWaitPoint_.notifyAll();
}

/// Two threads may end the process at once, for example the consumer from inside an appender. The system runs
/// each exit function in only one of them, and the process exits once either has finished. So this thread
/// waits for what the other one is writing or showing, as long as that makes progress; the other may itself
/// be waiting for this thread, until it gives up. Then the rest is left to the other thread, since the system
/// tolerates only one thread in its own exit functions.
void AsynchronousDispatcher::awaitEnd() noexcept {
    if (endingThread_ == std::this_thread::get_id()) {
        return;
    }
    std::uint64_t progress = 0;
    bool isDone = false;
    do {
        progress = appenders_.progress() + statistics().waiting;
        isDone = stateWaitPoint_.wait(Deadline(2 * MAX_STALL_TIME), [this] { return end_ == DONE; });
    } while (!isDone && progress != appenders_.progress() + statistics().waiting);
    queue_.finishShowing();
    std::this_thread::sleep_for(MAX_STALL_TIME);
}

/// Detaches the consumer instead of joining it: it may be stuck, or be this thread, the last of the process.
/// If another thread has the lock, that one joins it.
void AsynchronousDispatcher::abandonConsumer() {
    if (!threadLock_.tryLock()) {
        return;
    }
    const ScopedLock lock(threadLock_, Platform::ADOPT_LOCK);
    if (consumerThread_) {
        consumerThread_->detach();
        abandonedConsumer_ = consumerThread_.release();
    }
}

/// \return false if the consumer is stuck, or was not waited for
bool AsynchronousDispatcher::endConsumer(bool waitsForThread) {
    change({RUNNING}, ENDING);
    const auto hasEnded = [this] { return change({ABSENT, WANTED, ENDED}, OVER); };
    std::uint64_t progress = 0;
    if (!waitsForThread) {
        return false;
    }
    do {
        progress = appenders_.progress();
        if (stateWaitPoint_.wait(Deadline(MAX_STALL_TIME), hasEnded)) {
            return true;
        }
    } while (progress != appenders_.progress());
    return false;
}

// In a forked child

/// The parent writes what it had queued. Its consumer does not run in the child, so its `Worker` is leaked.
void AsynchronousDispatcher::beginInChild() noexcept {
    const bool isExchanging = queue_.hasHold();
    queue_.renewInChild();
    files_.forgetInChild();
    stateWaitPoint_.renewInChild();
    appenders_.endDeliveryInChild();
    if (isExchanging) {
        appenders_.exchangeEntries();
    }
    DeferredMessages::instance().forgetInChild();
    const ScopedLock lock(threadLock_);
    if (consumerThread_) {
        parentsConsumer_ = consumerThread_.release();
    }
    if (end_ != NOT_BEGUN) { // by a thread of the parent
        endingThread_ = std::this_thread::get_id();
    }
    state_ = appenders_.isEmpty() ? ABSENT : WANTED;
    queue_.setServed(false);
}

} // namespace Log
} // namespace ZAV
