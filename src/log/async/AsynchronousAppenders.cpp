#include "log/async/AsynchronousAppenders.h"

#include "log/LogException.h"
#include "log/commands/FailureReport.h"
#include "log/message/MessageFields.h"
#include "log/reentrancy/LibraryCall.h"
#include "zav-util/StandardError.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// Calls a function with the message object. The object is filled again for each appender: each appender
/// gets the whole batch before the next one does, and keeping all objects would take several times the
/// memory.
template <typename Use>
void withMessage(const MessageFields& fields, Use use) noexcept {
    ReusedMessage message(fields);
    try {
        message.get();
    } catch (const std::bad_alloc&) {
        FailureCount::add(); // there is no message to report
        return;
    }
    // A listener notified of a failed write may throw, and so may a filter. That must not end the thread, and
    // with it all logging; it is only shown as if it had.
    try {
        use(message.get());
    } catch (const std::exception& exception) {
        Util::writeErrorLine(UNCAUGHT_IN_CONSUMER, exception.what());
    } catch (...) {
        Util::writeErrorLine(UNCAUGHT_IN_CONSUMER, "unknown exception");
    }
}

/// Reports a failed message as `Appender::output` does.
void report(const Appender& appender, const MessageFields& fields,
            const std::exception_ptr& reason) noexcept {
    withMessage(fields, [&](const LogMessage& message) {
        try {
            std::rethrow_exception(reason);
        } catch (const LogException& exception) {
            FailureNotice::noteFailed(&appender, appender.getName(), exception.what());
            FailureReport::deliverFor(message, exception.what());
        } catch (const std::exception& exception) {
            FailureNotice::noteFailed(&appender, appender.getName(), exception.what());
            FailureReport::deliverFor(message, nullptr);
        }
    });
}

/// The limit of nested reports applies anew to each message that answers no report.
ReportAnswer answerOf(const PackedMessage::Unpacked& message, ThreadRecord& thread) noexcept {
    if (message.answeredReports == 0) {
        thread.nestedReports = 0;
    }
    return ReportAnswer(thread, message.answeredReports);
}

BatchAppender* batchAppenderIn(Appender* appender) {
    auto* const batching = dynamic_cast<BatchAppender*>(appender);
    return batching != nullptr && batching->writesBatches() ? batching : nullptr;
}

} // namespace

AsynchronousAppenders::Entry::Entry(Appender* added, IsListed asked)
    : appender(added), isListed(asked), batching(batchAppenderIn(added)) {}

void AsynchronousAppenders::add(Appender* appender, IsListed isListed) {
    std::list<Entry> added;
    added.emplace_back(appender, isListed);
    const ScopedLock listLock(listLock_);
    added_.splice(added_.end(), added);
}

/// A thread inside an appender or a listener may hold a lock that the delivery waits for.
bool AsynchronousAppenders::remove(Appender* appender) {
    hasEntry([appender](Entry& entry) {
        Appender* expected = appender;
        entry.appender.compare_exchange_strong(expected, nullptr);
        return false; // all of them
    });
    if (!LibraryCall::isOpen()) {
        const ScopedLock lock(appendersLock_);
        renewList();
    }
    return isEmpty();
}

void AsynchronousAppenders::prepareExchange(const std::vector<Appender*>& configured) {
    std::optional<std::list<Entry>> prepared(std::in_place);
    for (Appender* const appender : configured) {
        prepared->emplace_back(appender, nullptr);
    }
    const ScopedLock listLock(listLock_);
    prepared_.swap(prepared);
}

void AsynchronousAppenders::exchangeConfigured() {
    exchangeEntries();
    if (!LibraryCall::isOpen()) {
        const ScopedLock lock(appendersLock_);
        renewList();
    }
}

void AsynchronousAppenders::exchangeEntries() noexcept {
    const ScopedLock listLock(listLock_);
    if (!prepared_) {
        return;
    }
    hasEntry([](Entry& entry) {
        if (entry.isListed == nullptr) {
            entry.appender = nullptr;
        }
        return false; // all of them
    });
    added_.splice(added_.end(), *prepared_);
    prepared_.reset();
}

void AsynchronousAppenders::renewList() {
    std::list<Entry> removed; // destroyed after the lock is released
    const ScopedLock listLock(listLock_);
    asynchronousAppenders_.splice(asynchronousAppenders_.end(), added_);
    for (auto entry = asynchronousAppenders_.begin(); entry != asynchronousAppenders_.end();) {
        const auto next = std::next(entry);
        if (entry->appender == nullptr) {
            removed.splice(removed.end(), asynchronousAppenders_, entry);
        }
        entry = next;
    }
}

template <typename Condition>
bool AsynchronousAppenders::hasEntry(Condition condition) {
    const ScopedLock listLock(listLock_);
    return std::any_of(asynchronousAppenders_.begin(), asynchronousAppenders_.end(), condition) ||
           std::any_of(added_.begin(), added_.end(), condition);
}

bool AsynchronousAppenders::isEmpty() {
    return !hasEntry([](const Entry& entry) { return entry.appender != nullptr; });
}

bool AsynchronousAppenders::hasApplicationAppender() {
    return hasEntry(
        [](const Entry& entry) { return entry.appender != nullptr && entry.isListed != nullptr; });
}

bool AsynchronousAppenders::deliver(MessageBatch& batch, QueueFile* file) noexcept {
    const ScopedLock lock(appendersLock_);
    isAbandoned_ = false;
    renewList();
    for (auto entry = asynchronousAppenders_.begin(); !isAbandoned_ && entry != asynchronousAppenders_.end();
         ++entry) {
        const bool isLast = std::next(entry) == asynchronousAppenders_.end();
        if (entry->batching != nullptr) {
            deliverBatched(*entry, batch, isLast, file);
        } else {
            deliverOneByOne(*entry, batch, isLast, file);
        }
    }
    return !asynchronousAppenders_.empty();
}

void AsynchronousAppenders::deliverOneByOne(const Entry& entry, MessageBatch& batch, bool isLast,
                                            QueueFile* file) noexcept {
    ThreadRecord& thread = threadRecord();
    QueueFileMark mark = entry.markIn(file);
    for (batch.rewind(); !isAbandoned_ && batch.hasNext();) {
        giveTo(entry, batch.next(), thread);
        if (!isAbandoned_) {
            mark.set(batch.nextNumber() - 1);
        }
        if (isLast) {
            batch.setGivenTo(batch.nextNumber() - 1);
        }
        countProgress();
        prepareMemory(batch);
    }
}

/// Messages count as delivered once their lines are written. A failure is reported before the next message is
/// delivered, so that reports come in the order of their messages.
void AsynchronousAppenders::deliverBatched(const Entry& entry, MessageBatch& batch, bool isLast,
                                           QueueFile* file) noexcept {
    QueueFileMark mark = entry.markIn(file);
    if (BatchAppender* const appender = entry.batchAppender()) {
        appender->beginRound();
    }
    ThreadRecord& thread = threadRecord();
    for (batch.rewind(); !isAbandoned_ && batch.hasNext();) {
        const PackedMessage::Unpacked message = batch.next();
        if (BatchAppender* const appender = entry.batchAppender()) {
            appender->expect(message.number);
        }
        giveTo(entry, message, thread);
        if (BatchAppender* const appender = mark && !isAbandoned_ ? entry.batchAppender() : nullptr) {
            const std::uint64_t firstKept = appender->firstKept();
            mark.set(firstKept == 0 ? message.number : firstKept - 1);
        }
        reportFailed(entry, batch, isLast);
        countProgress();
        prepareMemory(batch);
    }
    BatchAppender* const appender = entry.batchAppender();
    if (!isAbandoned_ && appender != nullptr) {
        appender->endRound();
        mark.set(batch.nextNumber() - 1);
        countProgress();
        reportFailed(entry, batch, isLast);
    }
    if (isLast) {
        batch.setGivenTo(batch.nextNumber() - 1);
    }
}

/// Reads the batch again up to the current position: reports are rare, and storing what they need would
/// burden every message.
void AsynchronousAppenders::reportFailed(const Entry& entry, MessageBatch& batch, bool isLast) noexcept {
    BatchAppender* const appender = isAbandoned_ ? nullptr : entry.batchAppender();
    if (appender == nullptr || !appender->hasFailed()) {
        return;
    }
    const BatchAppender::Failed failed = appender->takeFailed();
    const std::uint64_t end = batch.nextNumber();
    ThreadRecord& thread = threadRecord();
    auto line = failed.lines.begin();
    for (batch.rewind(); !isAbandoned_ && batch.nextNumber() != end;) {
        const PackedMessage::Unpacked message = batch.next();
        if (line == failed.lines.end() || line->number != message.number) {
            continue;
        }
        ++line;
        if (isLast) {
            batch.setGivenTo(message.number - 1);
        }
        const ReportAnswer answer = answerOf(message, thread);
        report(*appender, message.fields, failed.reason);
    }
}

void AsynchronousAppenders::giveTo(const Entry& entry, const PackedMessage::Unpacked& message,
                                   ThreadRecord& thread) noexcept {
    const ReportAnswer answer = answerOf(message, thread);
    if (Appender* const appender = entry.appenderOf(message.fields)) {
        withMessage(message.fields, [appender](const LogMessage& whole) { appender->output(whole); });
    }
}

/// \return null if the appender was removed or must not get the message
Appender* AsynchronousAppenders::Entry::appenderOf(const MessageFields& message) const noexcept {
    Appender* const listed = appender.load(std::memory_order_acquire);
    const bool getsAll = isListed == nullptr || message.logger == nullptr;
    return listed == nullptr || getsAll || isListed(*message.logger, listed) ? listed : nullptr;
}

/// \return null if the appender was removed
BatchAppender* AsynchronousAppenders::Entry::batchAppender() const noexcept {
    return appender.load(std::memory_order_acquire) != nullptr ? batching : nullptr;
}

/// Only configured appenders have marks, since only they get messages of an earlier run.
QueueFileMark AsynchronousAppenders::Entry::markIn(QueueFile* file) const noexcept {
    const Appender* const marked = appender.load(std::memory_order_acquire);
    return file == nullptr || marked == nullptr || isListed != nullptr
               ? QueueFileMark()
               : file->appenderMark(marked->getName());
}

Recovery AsynchronousAppenders::recover(QueueFile& file) {
    const ScopedLock lock(appendersLock_);
    renewList();
    std::vector<Appender*> appenders;
    for (const Entry& entry : asynchronousAppenders_) {
        Appender* const appender = entry.appender;
        if (entry.isListed == nullptr && appender != nullptr) {
            appenders.push_back(appender);
        }
    }
    return Log::recover(file, appenders);
}

} // namespace Log
} // namespace ZAV
