#include "log/async/MessageQueue.h"

#include "log/layout/UndeliveredMessage.h"
#include "platform/Threads.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <thread>

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

namespace {

/// Returned instead of a number if the message was discarded rather than appended.
constexpr std::uint64_t DISCARDED = 0;

} // namespace

// The settings

/// Holds no lock while reading: an invalid setting is shown on standard error, whose reader may log.
void MessageQueue::configure(const Util::Properties& properties) {
    DispatcherSettings settings = this->settings();
    settings.read(properties);
    use(settings);
}

void MessageQueue::use(const DispatcherSettings& settings) {
    const bool waitedWithoutLimit = deliversPromptly();
    const std::uint64_t periodBefore = waitingPeriod_;
    store(settings);
    if (waitedWithoutLimit || waitingPeriod_ < periodBefore) {
        wake(); // ends a wait that the new settings would not start, or would make shorter
    }
}

DispatcherSettings MessageQueue::settings() const {
    DispatcherSettings settings;
    settings.maxQueueSize = maxQueueSize_;
    settings.waitingPeriod = Time(waitingPeriod_, Util::TimeUtils::USEC);
    settings.priority = priority_;
    settings.overflowBlocks = overflowBlocks_;
    return settings;
}

void MessageQueue::store(const DispatcherSettings& settings) {
    maxQueueSize_ = settings.maxQueueSize;
    waitingPeriod_ = settings.waitingPeriod.microseconds();
    priority_ = settings.priority;
    overflowBlocks_ = settings.overflowBlocks;
}

// Called by logging calls

void MessageQueue::append(const MessageFields& message, bool mayWaitForRoom) {
    if (maxQueueSize_.load(std::memory_order_relaxed) <= 1) {
        lines_.waitForRoom();
        if (store_.discard(message, lines_, SHOWN_WHEN_DISCARDED)) {
            lines_.write();
            return;
        }
    }
    const bool waits = mayWaitForRoom && overflowBlocks_.load(std::memory_order_relaxed);
    std::uint64_t number = waits ? appendWithRoom(message) : store_.append(message);
    if (number == MessageStore::FILE_FULL) {
        number = store_.fits(message) ? appendToFullFile(message) : discardOversized(message);
    }
    if (number != DISCARDED) {
        hasAppended(number);
    }
}

/// With a limit of 0 or 1 no message can ever wait, so there is no room to wait for.
std::uint64_t MessageQueue::appendWithRoom(const MessageFields& message) {
    while (willBeServed() && maxQueueSize_ > 1) {
        const std::uint64_t done = store_.lastDone(); // read first, so that room made later is not missed
        const std::uint64_t number = store_.append(message, maxQueueSize_ - 1);
        if (MessageStore::isNumber(number)) {
            return number;
        }
        if (number == MessageStore::AT_LIMIT) {
            waitForRoom();
        } else if (!store_.fits(message)) {
            return MessageStore::FILE_FULL;
        } else if (done != store_.lastNumber()) {
            waitForDelivery(done);
        } else if (discardIfNoneWaits(message)) { // the space it needs is held by idle threads' rings
            return DISCARDED;
        }
    }
    return store_.append(message);
}

std::uint64_t MessageQueue::discardOversized(const MessageFields& message) {
    lines_.waitForRoom();
    store_.discardOversized(message, lines_, SHOWN_WHEN_DISCARDED);
    lines_.write();
    return DISCARDED;
}

/// Discards the oldest messages to make room, as in a queue at its limit. Neither a batch in delivery nor the
/// blocks held by idle threads can make room: once nothing waits any more, the message itself is discarded.
std::uint64_t MessageQueue::appendToFullFile(const MessageFields& message) {
    std::uint64_t number = MessageStore::FILE_FULL;
    while (number == MessageStore::FILE_FULL) {
        lines_.waitForRoom();
        const MessageStore::Taken taken = store_.discardOldest(1, lines_, SHOWN_WHEN_DISCARDED);
        if (taken == MessageStore::NOT_PUBLISHED) {
            std::this_thread::yield();
        }
        number = store_.append(message);
        if (number == MessageStore::FILE_FULL && taken == MessageStore::NOTHING &&
            discardIfNoneWaits(message)) {
            return DISCARDED;
        }
    }
    lines_.write();
    return number;
}

/// \return false if another message waits; this one is then not discarded
bool MessageQueue::discardIfNoneWaits(const MessageFields& message) {
    lines_.waitForRoom();
    const bool isDiscarded = store_.discard(message, lines_, SHOWN_WHEN_DISCARDED, true);
    lines_.write();
    return isDiscarded;
}

/// \param done value of `lastDone` before the file was found full
void MessageQueue::waitForDelivery(std::uint64_t done) {
    callConsumer();
    waitPoint_.wait(Deadline(),
                    [this, done] { return !isAwaited_ || !willBeServed() || store_.lastDone() != done; });
}

void MessageQueue::waitForRoom() {
    callConsumer();
    waitPoint_.wait(Deadline(),
                    [this] { return !isAwaited_ || !willBeServed() || store_.size() + 1 < maxQueueSize_; });
}

/// Only the message that fills the first half wakes the consumer, not every later one. At the limit each call
/// checks the number of all waiting messages, not of those up to its own: other calls may have discarded some
/// already.
///
/// A consumer on call sets `isOnCall_` before it checks for new numbers, and a logging call takes its number
/// before it checks `isOnCall_`: one of the two sees the other.
void MessageQueue::hasAppended(std::uint64_t number) {
    const std::uint64_t limit = maxQueueSize_.load(std::memory_order_relaxed);
    if (store_.sizeUpTo(number) == limit / 2 || isOnCall_ || store_.isFilling()) {
        wake();
    }
    if (store_.size() >= limit) {
        discardOldest();
    }
    if (store_.isClosed()) {
        showAll();
    }
}

/// Discards nothing if the consumer has taken messages meanwhile.
void MessageQueue::discardOldest() {
    if (store_.size() < maxQueueSize_) {
        return;
    }
    lines_.waitForRoom();
    while (store_.discardOldest(maxQueueSize_, lines_, SHOWN_WHEN_DISCARDED) == MessageStore::NOT_PUBLISHED) {
        std::this_thread::yield();
    }
    lines_.write();
}

// Waiting for the consumer

/// Also true while a reload holds the queue, when one consumer may be replaced by another.
bool MessageQueue::willBeServed() const noexcept {
    const unsigned service = service_;
    return (service & SERVED) != 0 || ((service & HELD) != 0 && !store_.isClosed());
}

bool MessageQueue::flush(Time timeout) {
    return awaitDone(store_.lastNumber(), Deadline::after(timeout), [this] { return willBeServed(); });
}

bool MessageQueue::drain(const Deadline& deadline) {
    return awaitDone(store_.lastNumber(), deadline, [this] { return isServed(); }) || !isServed();
}

void MessageQueue::awaitHold() {
    awaitDone(store_.lastBeforeHold(), Deadline(), [this] { return isServed(); });
}

/// \param isServed predicate: whether it is still worth waiting
template <typename IsServed>
bool MessageQueue::awaitDone(std::uint64_t last, const Deadline& deadline, const IsServed& isServed) {
    while (store_.lastDone() < last) {
        if (!isServed()) {
            return false;
        }
        if (store_.lastTaken() < last) {
            callConsumer(); // even if the deadline has passed
        }
        const auto mayBeDone = [this, last, &isServed] {
            return store_.lastDone() >= last || !isServed() || (store_.lastTaken() < last && !isAwaited_);
        };
        if (!waitPoint_.wait(deadline, mayBeDone)) {
            return false;
        }
    }
    return true;
}

/// One call is enough until the consumer has taken the messages.
void MessageQueue::callConsumer() {
    if (!isAwaited_.exchange(true)) {
        waitPoint_.notifyAll();
    }
}

// In a forked child

void MessageQueue::renewInChild() noexcept {
    waitPoint_.renewInChild();
    lines_.renewInChild();
    store_.renewInChild();
    service_ = 0;
    isAwaited_ = false;
    isOnCall_ = false;
}

} // namespace Log
} // namespace ZAV
