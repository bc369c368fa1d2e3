// Queue operations for the consumer, and for the end of the process.

#include "log/async/MessageQueue.h"
#include "log/layout/UndeliveredMessage.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Process.h"
#include "platform/Threads.h"

#include <chrono>
#include <new>
#include <thread>

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

namespace {

/// How often an idle consumer checks whether the process still has another thread.
constexpr std::chrono::seconds POLL_INTERVAL{2};

} // namespace

void MessageQueue::setServed(bool isServed) {
    if (isServed) {
        service_ |= SERVED;
    } else {
        service_ &= ~unsigned{SERVED};
    }
    waitPoint_.notifyAll();
}

void MessageQueue::wake() {
    isWoken_ = true;
    waitPoint_.notifyAll();
}

/// A consumer that has just been busy polls for a while, which saves logging calls from having to wake it. At
/// 10,000 calls a second, an interval of 100 us takes more than twice the processor time.
template <typename Condition>
bool MessageQueue::poll(const Condition& isDue) {
    constexpr std::chrono::microseconds INTERVAL{300};
    constexpr int LOOKS = 5;
    for (int look = 0; look < LOOKS; ++look) {
        if (waitPoint_.wait(Deadline(INTERVAL), isDue)) {
            return true;
        }
    }
    return false;
}

/// Waits before it checks the queue, so that messages are written in batches. Only prompt delivery checks
/// first, since it waits without a timeout.
bool MessageQueue::wait() {
    isWoken_ = false;
    const bool isPrompt = deliversPromptly();
    const auto isDue = [this, isPrompt] {
        return !isServed() || isWoken_ || isAwaited_ || (isPrompt && store_.size() != 0);
    };
    if (isPrompt && Platform::hasFineTimer() && poll(isDue)) {
        return true;
    }
    isOnCall_ = isPrompt;
    const Deadline end = endOfWait();
    bool hasOtherThreads = true;
    bool isOver = false;
    while (!isOver && !waitPoint_.wait(end.orEarlier(nextLivenessCheck_), isDue)) {
        hasOtherThreads = checkForOtherThreads();
        isOver = !hasOtherThreads || end.isOver();
    }
    isOnCall_ = false;
    return hasOtherThreads;
}

bool MessageQueue::checkForOtherThreads() {
    if (!nextLivenessCheck_.isOver()) {
        return true;
    }
    nextLivenessCheck_ = Deadline(POLL_INTERVAL);
    return !Platform::isOnlyThread();
}

/// Messages that the consumer has deferred are retried soon, as it does not wait for loggers.
Deadline MessageQueue::endOfWait() const {
    return threadRecord().deferredMessages > 0 ? Deadline(std::chrono::milliseconds(10))
                                               : Deadline::after(Time(waitingPeriod_, Util::TimeUtils::USEC));
}

void MessageQueue::take(MessageBatch& batch) {
    isAwaited_ = false;
    if (store_.isHeld()) {
        waitPoint_.notifyAll(); // for `awaitHold`: the last message before the hold may have been discarded
        waitPoint_.wait(Deadline(), [this] { return !store_.isHeld() || !isServed(); });
    }
    try {
        store_.take(batch);
    } catch (const std::bad_alloc&) {
        // retried in the next round
    }
    waitPoint_.notifyAll(); // for threads that wait for room
}

void MessageQueue::hold() noexcept {
    service_ |= HELD;
    store_.hold();
}

void MessageQueue::endHold() {
    store_.endHold();
    service_ &= ~unsigned{HELD};
    waitPoint_.notifyAll();
}

void MessageQueue::release(MessageBatch& batch, bool isDelivered) {
    store_.release(batch, isDelivered);
    waitPoint_.notifyAll();
}

// The end of the process

void MessageQueue::close() {
    store_.close();
    setServed(false);
}

void MessageQueue::showAll() {
    MessageStore::Taken taken = MessageStore::TAKEN;
    while (taken != MessageStore::NOTHING) {
        taken = store_.discardOldest(1, lines_, SHOWN_AT_PROCESS_END);
        if (taken == MessageStore::NOT_PUBLISHED) {
            std::this_thread::yield();
        }
    }
    lines_.write();
}

void MessageQueue::showRestOfDelivery() {
    store_.showRestOfDelivery(lines_, SHOWN_AT_PROCESS_END);
}

} // namespace Log
} // namespace ZAV
