#include "log/async/AsynchronousAppenders.h"

#include "log/Appender.h"
#include "log/message/FailureCount.h"
#include "log/message/ReusedMessage.h"
#include "log/reentrancy/LibraryCall.h"
#include "log/reentrancy/ReportAnswer.h"
#include "zav-util/StandardError.h"

#include <algorithm>
#include <exception>
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
    // A listener that was just told of a failed write may throw, and so may a filter. That must not end the
    // thread, and with it the log, but is shown as if it had.
    try {
        appender.output(message.get());
    } catch (const std::exception& exception) {
        Util::writeErrorLine(UNCAUGHT_IN_CONSUMER, exception.what());
    } catch (...) {
        Util::writeErrorLine(UNCAUGHT_IN_CONSUMER, "unknown exception");
    }
}

} // namespace

void AsynchronousAppenders::add(Appender* appender, IsListed isListed) {
    std::list<Entry> added;
    added.emplace_back(appender, isListed);
    const ScopedLock lock(appendersLock_);
    const ScopedLock listLock(listLock_);
    asynchronousAppenders_.splice(asynchronousAppenders_.end(), added);
}

/// A thread that is inside an appender or a listener may hold what a delivery waits for.
bool AsynchronousAppenders::remove(Appender* appender) ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    {
        const ScopedLock listLock(listLock_);
        for (Entry& entry : asynchronousAppenders_) {
            Appender* expected = appender;
            entry.appender.compare_exchange_strong(expected, nullptr);
        }
    }
    if (!LibraryCall::isOpen()) {
        const ScopedLock lock(appendersLock_);
        dropRemoved();
    }
    return isEmpty();
}

void AsynchronousAppenders::dropRemoved() {
    const ScopedLock listLock(listLock_);
    asynchronousAppenders_.remove_if([](const Entry& entry) { return entry.appender == nullptr; });
}

bool AsynchronousAppenders::isEmpty() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    const ScopedLock listLock(listLock_);
    return std::all_of(asynchronousAppenders_.begin(), asynchronousAppenders_.end(),
                       [](const Entry& entry) { return entry.appender == nullptr; });
}

bool AsynchronousAppenders::deliver(MessageBatch& batch) noexcept {
    const ScopedLock lock(appendersLock_);
    isAbandoned_ = false;
    dropRemoved();
    for (auto entry = asynchronousAppenders_.begin(); entry != asynchronousAppenders_.end(); ++entry) {
        deliverTo(*entry, batch, std::next(entry) == asynchronousAppenders_.end());
    }
    return !asynchronousAppenders_.empty();
}

/// The bound of reports in answer to others holds for each message that answers none.
void AsynchronousAppenders::deliverTo(const Entry& entry, MessageBatch& batch, bool isLast) noexcept {
    ThreadRecord& thread = threadRecord();
    for (batch.rewind(); !isAbandoned_ && batch.hasNext();) {
        const PackedMessage::Unpacked message = batch.next();
        if (message.answeredReports == 0) {
            thread.nestedReports = 0;
        }
        const ReportAnswer answer(thread, message.answeredReports);
        if (Appender* const appender = entry.appenderOf(message.fields)) {
            give(*appender, message.fields);
        }
        if (isLast) {
            batch.setGiven();
        }
        progress_.store(progress_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
}

/// \return null if the appender was removed, or is not meant to get the message
Appender* AsynchronousAppenders::Entry::appenderOf(const MessageFields& message) const noexcept {
    Appender* const listed = appender.load(std::memory_order_acquire);
    const bool getsAll = isListed == nullptr || message.logger == nullptr;
    return listed == nullptr || getsAll || isListed(*message.logger, listed) ? listed : nullptr;
}

void AsynchronousAppenders::endDeliveryInChild() noexcept {
    isAbandoned_ = true;
}

} // namespace Log
} // namespace ZAV
