#include "log/async/AsynchronousAppenders.h"

#include "log/Appender.h"
#include "log/commands/FailureReport.h"
#include "log/reentrancy/ReportAnswer.h"

#include <new>
#include <optional>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// Each appender has the messages made anew: it is given the whole batch before the next one is, and all of
/// them at once would take several times the memory.
std::optional<LogMessage> makeNext(MessageBatch::Reader& messages) {
    try {
        return messages.next();
    } catch (const std::bad_alloc&) {
        FailureReport::count(); // there is no message to report
        return std::nullopt;
    }
}

void deliverTo(Appender& appender, const MessageBatch& batch) noexcept {
    MessageBatch::Reader messages(batch);
    while (messages.hasNext()) {
        const std::optional<LogMessage> message = makeNext(messages);
        if (!message) {
            continue;
        }
        const ReportAnswer answer(messages.answeredReports());
        try {
            appender.output(*message);
        } catch (...) {
            // Thrown by a listener that was just told of a failed write: it must not end the consumer thread,
            // and with it the log.
            continue;
        }
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

} // namespace Log
} // namespace ZAV
