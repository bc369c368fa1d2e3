// The asynchronous dispatcher at the end of the process, and in a forked child.

#include "log/async/AsynchronousDispatcher.h"

#include "log/commands/CommandBus.h"
#include "log/reentrancy/LibraryCall.h"
#include "log/reentrancy/PutOffMessages.h"
#include "platform/Threads.h"

#include <thread>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// How long the end of the process waits for a consumer that does not come on.
constexpr std::chrono::seconds LONGEST_STANDSTILL{2};

} // namespace

/// Writes what is still queued when the process ends without `LogManager::finish`. The listeners, which
/// belong to the application, may be gone by now.
///
/// A thread that ends the process from inside an appender or a listener holds locks that the consumer may be
/// waiting for; there the messages are shown on the standard error stream instead, and so is what a consumer
/// has not written that comes to a standstill.
void AsynchronousDispatcher::endWithProcess() noexcept {
    const Platform::NoCancellation noCancellation;
    const bool mayDeliver = !LibraryCall::isOpen();
    const LibraryCall call;
    endingThread_ = std::this_thread::get_id();
    end_ = BEGUN;
    CommandBus::instance().forgetListeners();
    Dispatch::showOpen();
    if (!mayDeliver) {
        queue_.close(); // so that the consumer does not begin what is shown here
    }
    const bool hasEnded = endConsumer(mayDeliver);
    if (hasEnded && queue_.hasHold()) { // what comes behind it is for the appenders of after the change
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
    PutOffMessages::instance().showAll();
    queue_.finishShowing();
    abandonConsumer();
    end_ = DONE;
    stateBell_.ring();
}

/// Two threads may end the process at once, the consumer from inside an appender for example. The system runs
/// each function in one of them, and the process is gone once either is through. So what the other one is
/// writing or showing is waited for, as long as it comes on; it may itself be waiting for this thread, until
/// it gives that up. Then the rest is left to that one, since the system bears only one in its own functions.
void AsynchronousDispatcher::awaitEnd() noexcept {
    if (endingThread_ == std::this_thread::get_id()) {
        return;
    }
    std::uint64_t progress = 0;
    bool isDone = false;
    do {
        progress = appenders_.progress() + statistics().waiting;
        isDone = stateBell_.wait(Deadline(2 * LONGEST_STANDSTILL), [this] { return end_ == DONE; });
    } while (!isDone && progress != appenders_.progress() + statistics().waiting);
    queue_.finishShowing();
    std::this_thread::sleep_for(LONGEST_STANDSTILL);
}

/// Nobody waits for it any more. It may be stuck, or be this thread, the last of the process; so it is not
/// joined. If another thread has the lock, that one joins it.
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
        if (stateBell_.wait(Deadline(LONGEST_STANDSTILL), hasEnded)) {
            return true;
        }
    } while (progress != appenders_.progress());
    return false;
}

// In a forked child

/// What the parent had queued is the parent's to write. Its consumer does not run here: the thread's object
/// is left alone.
void AsynchronousDispatcher::beginInChild() noexcept {
    const bool isExchanging = queue_.hasHold();
    queue_.renewInChild();
    files_.forgetInChild();
    stateBell_.renewInChild();
    appenders_.endDeliveryInChild();
    if (isExchanging) {
        appenders_.exchangeEntries();
    }
    PutOffMessages::instance().forgetInChild();
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
