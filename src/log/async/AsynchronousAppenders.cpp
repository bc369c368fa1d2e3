#include "log/async/AsynchronousAppenders.h"

#include "log/Appender.h"
#include "log/commands/FailureReport.h"
#include "log/layout/ShownMessage.h"
#include "log/message/ReusedMessage.h"
#include "log/reentrancy/ReportAnswer.h"

#include <new>
#include <optional>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// The message object is filled for each appender again: an appender is given the whole batch before the next
/// one is, and all messages at once would take several times the memory.
void give(Appender& appender, const MessageFields& fields) noexcept {
    std::optional<ReusedMessage> message;
    try {
        message.emplace(fields);
    } catch (const std::bad_alloc&) {
        FailureReport::count(); // there is no message to report
        return;
    }
    try {
        appender.output(message->get());
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
    for (Appender* const appender : asynchronousAppenders_) {
        deliverTo(*appender, batch);
    }
    return !asynchronousAppenders_.empty();
}

void AsynchronousAppenders::deliverTo(Appender& appender, const MessageBatch& batch) noexcept {
    MessageBatch::Reader messages(batch);
    delivered_ = &messages;
    while (delivered_ != nullptr && messages.hasNext()) {
        const MessageFields fields = messages.next();
        const ReportAnswer answer(messages.answeredReports());
        give(appender, fields);
    }
    delivered_ = nullptr;
}

void AsynchronousAppenders::showRestOfDelivery() noexcept {
    if (!appendersLock_.tryLock()) {
        return; // another thread delivers
    }
    const ScopedLock lock(appendersLock_, Platform::ADOPT_LOCK);
    while (delivered_ != nullptr && delivered_->hasNext()) {
        showOnStandardError(SHOWN_AT_PROCESS_END, delivered_->next());
    }
}

void AsynchronousAppenders::endDeliveryInChild() noexcept {
    delivered_ = nullptr;
}

} // namespace Log
} // namespace ZAV
