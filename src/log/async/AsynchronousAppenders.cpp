#include "log/async/AsynchronousAppenders.h"

#include "log/Appender.h"
#include "log/layout/ShownMessage.h"
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

bool AsynchronousAppenders::deliver(const MessageBatch& batch) noexcept {
    const ScopedLock lock(appendersLock_);
    isAbandoned_ = false;
    given_ = 0;
    setDelivered(&batch);
    for (auto appender = asynchronousAppenders_.begin(); appender != asynchronousAppenders_.end();
         ++appender) {
        deliverTo(**appender, batch, std::next(appender) == asynchronousAppenders_.end());
    }
    setDelivered(nullptr);
    return !asynchronousAppenders_.empty();
}

/// The bound of reports in answer to others holds for each message that answers none.
void AsynchronousAppenders::deliverTo(Appender& appender, const MessageBatch& batch, bool isLast) noexcept {
    ThreadRecord& thread = threadRecord();
    MessageBatch::Reader messages(batch);
    while (!isAbandoned_ && messages.hasNext()) {
        const MessageFields fields = messages.next();
        if (messages.answeredReports() == 0) {
            thread.nestedReports = 0;
        }
        const ReportAnswer answer(thread, messages.answeredReports());
        given_.store(given_.load(std::memory_order_relaxed) + (isLast ? 1 : 0), std::memory_order_relaxed);
        give(appender, fields);
    }
}

void AsynchronousAppenders::setDelivered(const MessageBatch* batch) noexcept {
    const ScopedLock listLock(listLock_);
    delivered_ = batch;
}

/// What an earlier appender has got already, and what the delivery goes on to write until the process is
/// gone, is shown as well: rather twice than not at all.
void AsynchronousAppenders::showRestOfDelivery() noexcept {
    const ScopedLock listLock(listLock_); // the batch stays as long as it is held
    if (delivered_ == nullptr) {
        return;
    }
    const std::size_t given = given_; // of now: the delivery may go on while these are shown
    MessageBatch::Reader messages(*delivered_);
    for (std::size_t number = 0; messages.hasNext(); ++number) {
        const MessageFields fields = messages.next();
        if (number >= given) {
            showOnStandardError(SHOWN_AT_PROCESS_END, fields);
        }
    }
}

void AsynchronousAppenders::endDeliveryInChild() noexcept {
    isAbandoned_ = true;
    setDelivered(nullptr);
}

} // namespace Log
} // namespace ZAV
