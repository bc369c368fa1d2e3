#include "log/async/MessageQueue.h"

#include "log/layout/ShownMessage.h"
#include "log/reentrancy/ThreadRecord.h"
#include "platform/ProcessLifetime.h"
#include "platform/ThreadSlot.h"
#include "platform/Threads.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <thread>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;
using Util::TimeUtils::Time;

namespace {

/// How often a consumer that has nothing to do looks whether the process has another thread still.
constexpr std::chrono::seconds TIME_BETWEEN_LOOKS{2};

/// \param duration 0 for no end
Deadline deadlineAfter(Time duration) {
    constexpr Time LONGEST(36500, Util::TimeUtils::DAY);
    return duration == Time()
               ? Deadline()
               : Deadline(std::chrono::microseconds(std::min(duration, LONGEST).microseconds()));
}

} // namespace

// The settings

/// Nothing is held meanwhile, since a bad one is shown on a standard error that may log.
void MessageQueue::configure(const Util::Properties& properties) {
    const bool waitedWithoutLimit = deliversPromptly();
    const std::uint64_t periodBefore = waitingPeriod_;
    DispatcherSettings settings = this->settings();
    settings.read(properties);
    use(settings);
    if (waitedWithoutLimit || waitingPeriod_ < periodBefore) {
        wake(); // out of a wait that the new settings would not make, or not for as long
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

void MessageQueue::use(const DispatcherSettings& settings) {
    maxQueueSize_ = settings.maxQueueSize;
    waitingPeriod_ = settings.waitingPeriod.microseconds();
    priority_ = settings.priority;
    overflowBlocks_ = settings.overflowBlocks;
}

// The logging call's side

/// Nothing can fail once the message has its number, since those behind it wait for it.
void MessageQueue::append(const MessageFields& message, bool mayWait) {
    ThreadRecord& thread = threadRecord();
    if (thread.ring == nullptr && !addRing(thread)) {
        hasAppended(appendToSharedRing(message));
        return;
    }
    const PackedMessage packed =
        thread.ring->reserve(message, thread.answeredReports, lastNumber_.load(std::memory_order_relaxed));
    const bool waits = mayWait && overflowBlocks_.load(std::memory_order_relaxed);
    const std::uint64_t number = waits ? takeNumberWithRoom() : takeNumber();
    thread.ring->append(packed, number);
    hasAppended(number);
}

/// Only the message that fills the first half wakes the consumer, not every message behind it.
///
/// A consumer on call looks for new numbers after it has said that it sleeps, and a call looks whether it
/// sleeps after it has taken a number: one of the two sees the other.
void MessageQueue::hasAppended(std::uint64_t number) {
    const std::uint64_t taken = lastTaken_.load(std::memory_order_relaxed);
    const std::uint64_t size = number > taken ? number - taken : 0; // the consumer may be beyond it by now
    const std::uint64_t limit = maxQueueSize_.load(std::memory_order_relaxed);
    if (size == limit / 2 || isOnCall_) {
        wake();
    }
    if (size >= limit) {
        discardOldest();
    }
    if (isClosed_) {
        showAll();
    }
}

std::uint64_t MessageQueue::takeNumberWithRoom() {
    std::uint64_t last = lastNumber_;
    while (isServed_) {
        if (!isFullBehind(last)) {
            if (lastNumber_.compare_exchange_weak(last, last + 1)) {
                return last + 1;
            }
            continue;
        }
        callConsumer();
        bell_.wait(Deadline(), [this] { return !isAwaited_ || !isServed_ || !isFullBehind(lastNumber_); });
        last = lastNumber_;
    }
    return takeNumber();
}

/// A limit of 0 or 1 leaves room for no message at all, and nothing to wait for.
bool MessageQueue::isFullBehind(std::uint64_t number) const noexcept {
    const std::uint64_t limit = maxQueueSize_;
    const std::uint64_t taken = lastTaken_; // the consumer may be beyond the number by now
    return limit > 1 && number >= taken && number + 1 - taken >= limit;
}

/// The oldest message may be on its way still: its thread has taken the number and waits for nothing before
/// it publishes the message.
void MessageQueue::discardOldest() {
    lines_.waitForRoom();
    for (bool isDone = false; !isDone; std::this_thread::yield()) {
        const ScopedLock lock(queueLock_);
        const std::uint64_t waiting = lastNumber_ - lastTaken_;
        const bool hasRoom = waiting == 0 || waiting < maxQueueSize_; // the consumer has come meanwhile
        isDone = hasRoom || takeOldest(SHOWN_WHEN_DISCARDED);
    }
    lines_.write();
}

/// \return false if the oldest message is not published yet
bool MessageQueue::takeOldest(const char* reason) noexcept {
    const std::uint64_t number = lastTaken_ + 1;
    for (const std::unique_ptr<Ring>& ring : rings_) {
        if (ring->findFront(number) && ring->front().nextNumber() == number) {
            lines_.add(shownLine(reason, ring->front().next().fields), reason);
            lastTaken_ = number;
            ++discardedCount_;
            if (delivered_ == nullptr) {
                lastDone_ = number;
            }
            return true;
        }
    }
    return false;
}

// The rings

namespace {

/// Has a thread that ends give its ring up. Never destroyed, since threads may still log while the process
/// ends.
Platform::ThreadSlot& queueOfThread(void (*end)(void* queue) = nullptr) {
    static Platform::ThreadSlot& slot = *new Platform::ThreadSlot(end);
    return slot;
}

} // namespace

/// \return false if the thread gets none: it is ending, and would leave the ring behind
bool MessageQueue::addRing(ThreadRecord& thread) {
    Platform::ThreadSlot& slot =
        queueOfThread([](void* queue) { static_cast<MessageQueue*>(queue)->endRing(); });
    if (thread.hasEndedRing || !slot.set(this)) {
        return false;
    }
    auto ring = std::make_unique<Ring>(pool_);
    Ring* const added = ring.get();
    const ScopedLock lock(queueLock_);
    rings_.push_back(std::move(ring));
    thread.ring = added;
    return true;
}

/// The ring stays until its messages are gone.
void MessageQueue::endRing() noexcept {
    ThreadRecord& thread = threadRecord();
    thread.hasEndedRing = true;
    const ScopedLock lock(queueLock_);
    if (thread.ring != nullptr) {
        thread.ring->end();
        thread.ring = nullptr;
        removeEndedRings();
    }
}

void MessageQueue::removeEndedRings() noexcept {
    const std::uint64_t lowest = lastTaken_ + 1;
    const auto isOver = [lowest](const std::unique_ptr<Ring>& ring) {
        return ring->hasEnded() && ring->lastKept() == nullptr && !ring->findFront(lowest);
    };
    rings_.erase(std::remove_if(rings_.begin(), rings_.end(), isOver), rings_.end());
}

std::uint64_t MessageQueue::appendToSharedRing(const MessageFields& message) {
    const ScopedLock lock(queueLock_);
    if (sharedRing_ == nullptr) {
        rings_.push_back(std::make_unique<Ring>(pool_));
        sharedRing_ = rings_.back().get();
    }
    const PackedMessage packed = sharedRing_->reserve(message, threadRecord().answeredReports, lastNumber_);
    const std::uint64_t number = takeNumber();
    sharedRing_->append(packed, number);
    return number;
}

// Waiting for the consumer

bool MessageQueue::flush(Time timeout) {
    const std::uint64_t last = lastNumber_;
    const Deadline deadline = deadlineAfter(timeout);
    while (lastDone_ < last) {
        if (!isServed_) {
            return false;
        }
        if (lastTaken_ < last) {
            callConsumer(); // however short the time is
        }
        const auto mayBeDone = [this, last] {
            return lastDone_ >= last || !isServed_ || (lastTaken_ < last && !isAwaited_);
        };
        if (!bell_.wait(deadline, mayBeDone)) {
            return false;
        }
    }
    return true;
}

/// One call is enough until the consumer comes.
void MessageQueue::callConsumer() {
    if (!isAwaited_.exchange(true)) {
        bell_.ring();
    }
}

/// Nothing leaves the queue meanwhile, or what has entered since the others were read would seem to wait.
LogStatistics MessageQueue::statistics() const noexcept {
    LogStatistics statistics;
    const ScopedLock lock(queueLock_);
    statistics.delivered = deliveredCount_;
    statistics.discarded = discardedCount_;
    statistics.queued = lastNumber_;
    statistics.waiting = statistics.queued - statistics.delivered - statistics.discarded;
    return statistics;
}

// The consumer's side

void MessageQueue::setServed(bool isServed) {
    isServed_ = isServed;
    bell_.ring();
}

void MessageQueue::wake() {
    isWoken_ = true;
    bell_.ring();
}

/// Waits before it looks at the queue, so that messages are written in batches; only prompt delivery looks
/// first, since it waits without a limit.
bool MessageQueue::wait() {
    isWoken_ = false;
    const bool isPrompt = deliversPromptly();
    const auto isDue = [this, isPrompt] {
        return !isServed_ || isWoken_ || isAwaited_ || (isPrompt && lastNumber_ != lastTaken_);
    };
    // One that has just been busy looks again for a while, which spares the calls from waking it.
    constexpr int LOOKS = 20;
    for (int look = 0; isPrompt && look < LOOKS; ++look) {
        if (isDue()) {
            return true;
        }
        if (!Platform::sleepBriefly()) {
            break;
        }
    }
    isOnCall_ = isPrompt;
    const Deadline end = endOfWait();
    bool hasCompany = true;
    bool isOver = false;
    while (!isOver && !bell_.wait(end.orEarlier(nextLook_), isDue)) {
        hasCompany = lookForCompany();
        isOver = !hasCompany || end.isOver();
    }
    isOnCall_ = false;
    return hasCompany;
}

bool MessageQueue::lookForCompany() {
    if (!nextLook_.isOver()) {
        return true;
    }
    nextLook_ = Deadline(TIME_BETWEEN_LOOKS);
    return !Platform::isOnlyThread();
}

/// What the consumer has put off is tried again soon: it does not wait for loggers.
Deadline MessageQueue::endOfWait() const {
    return threadRecord().putOffMessages > 0 ? Deadline(std::chrono::milliseconds(10))
                                             : deadlineAfter(Time(waitingPeriod_, Util::TimeUtils::USEC));
}

void MessageQueue::take(MessageBatch& batch) {
    {
        const ScopedLock lock(queueLock_);
        isAwaited_ = false;
        try {
            batch.streams_.reserve(rings_.size());
            fill(batch);
        } catch (const std::bad_alloc&) {
            batch.clear();
        }
    }
    bell_.ring(); // those who wait for room
}

/// The number of the last message is read before the rings, since each of them holds what was numbered by
/// then, or will do so in a moment.
void MessageQueue::fill(MessageBatch& batch) {
    batch.first_ = lastTaken_ + 1;
    batch.last_ = lastNumber_;
    if (batch.size() == 0 || isClosed_) {
        batch.clear();
        return;
    }
    for (const std::unique_ptr<Ring>& ring : rings_) {
        ring->findFront(batch.first_);
        ring->keep();
        batch.streams_.push_back({ring.get(), ring->lastKept(), ring->front(), ring->front(), 0});
    }
    lastTaken_ = batch.last_;
    delivered_ = &batch;
}

void MessageQueue::release(MessageBatch& batch, bool isDelivered) {
    {
        const ScopedLock lock(queueLock_);
        for (const MessageBatch::Stream& stream : batch.streams_) {
            stream.ring->release(stream.cursor);
        }
        (isDelivered ? deliveredCount_ : discardedCount_) += batch.size();
        delivered_ = nullptr;
        lastDone_.store(lastTaken_);
        removeEndedRings();
    }
    batch.clear();
    bell_.ring();
}

// The end of the process

void MessageQueue::close() {
    isClosed_ = true;
    setServed(false);
}

void MessageQueue::showAll() {
    for (bool isDone = false; !isDone; std::this_thread::yield()) {
        const ScopedLock lock(queueLock_);
        while (lastTaken_ != lastNumber_ && takeOldest(SHOWN_AT_PROCESS_END)) {
        }
        isDone = lastTaken_ == lastNumber_;
    }
    lines_.write();
}

/// The consumer gives the batch back under the lock, so it stays meanwhile.
void MessageQueue::showRestOfDelivery() {
    const ScopedLock lock(queueLock_);
    if (delivered_ == nullptr) {
        return;
    }
    try {
        MessageBatch rest;
        delivered_->copyRestTo(rest);
        while (rest.hasNext()) {
            lines_.add(shownLine(SHOWN_AT_PROCESS_END, rest.next().fields), SHOWN_AT_PROCESS_END);
        }
    } catch (const std::bad_alloc&) {
        lines_.add(std::string(), SHOWN_AT_PROCESS_END);
    }
}

// In a forked child

void MessageQueue::renewInChild() noexcept {
    bell_.renewInChild();
    lines_.renewInChild();
    const ScopedLock lock(queueLock_);
    threadRecord().ring = nullptr;
    sharedRing_ = nullptr;
    rings_.clear();
    lastNumber_ = deliveredCount_ + discardedCount_;
    lastTaken_.store(lastNumber_);
    lastDone_.store(lastNumber_);
    delivered_ = nullptr;
    isServed_ = false;
    isAwaited_ = false;
    isOnCall_ = false;
}

} // namespace Log
} // namespace ZAV
