#include "log/async/AsynchronousAppenders.h"

#include "log/Appender.h"
#include "log/message/FailureCount.h"
#include "log/message/ReusedMessage.h"
#include "log/reentrancy/ReportAnswer.h"

#include <iterator>
#include <new>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// The message object is filled for each appender again: an appender is given the whole batch before the next
/// one is, and all messages at once would take several times the memory.
void give(Appender& appender, const MessageFields& fields) noexcept {
    ReusedMessage message(fields);
    try {
        message.get();
    } catch (const std::bad_alloc&) {
        FailureCount::add(); // there is no message to report
        return;
    }
    try {
        appender.output(message.get());
    } catch (...) {
        // Thrown by a listener that was just told of a failed write: it must not end the consumer thread, and
        // with it the log.
        return;
    }
}

} // namespace

void AsynchronousAppenders::add(Appender* appender) {
    std::list<Appender*> added(1, appender);
    const ScopedLock lock(appendersLock_);
    const ScopedLock listLock(listLock_);
    asynchronousAppenders_.splice(asynchronousAppenders_.end(), added);
}

bool AsynchronousAppenders::remove(Appender* appender) {
    const ScopedLock lock(appendersLock_);
    const ScopedLock listLock(listLock_);
    asynchronousAppenders_.remove(appender);
    return asynchronousAppenders_.empty();
}

bool AsynchronousAppenders::isEmpty() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    const ScopedLock listLock(listLock_);
    return asynchronousAppenders_.empty();
}

bool AsynchronousAppenders::deliver(MessageBatch& batch) noexcept {
    const ScopedLock lock(appendersLock_);
    isAbandoned_ = false;
    for (auto appender = asynchronousAppenders_.begin(); appender != asynchronousAppenders_.end();
         ++appender) {
        deliverTo(**appender, batch, std::next(appender) == asynchronousAppenders_.end());
    }
    return !asynchronousAppenders_.empty();
}

/// The bound of reports in answer to others holds for each message that answers none.
void AsynchronousAppenders::deliverTo(Appender& appender, MessageBatch& batch, bool isLast) noexcept {
    ThreadRecord& thread = threadRecord();
    for (batch.rewind(); !isAbandoned_ && batch.hasNext();) {
        const PackedMessage::Unpacked message = batch.next();
        if (message.answeredReports == 0) {
            thread.nestedReports = 0;
        }
        const ReportAnswer answer(thread, message.answeredReports);
        give(appender, message.fields);
        if (isLast) {
            batch.setGiven();
        }
        progress_.store(progress_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
}

void AsynchronousAppenders::endDeliveryInChild() noexcept {
    isAbandoned_ = true;
}

} // namespace Log
} // namespace ZAV
