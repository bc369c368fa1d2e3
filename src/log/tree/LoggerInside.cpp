#include "log/tree/LoggerInside.h"

#include "log/async/AsynchronousDispatcher.h"
#include "log/message/MessageFields.h"
#include "log/reentrancy/LibraryCall.h"
#include "log/reentrancy/ThreadContext.h"
#include "platform/Process.h"
#include "platform/Threads.h"

#include <exception>

namespace ZAV {
namespace Log {

using Platform::ADOPT_LOCK;
using Platform::ScopedLock;
using namespace Util::TimeUtils;

Logger::Inside::Inside(Logger& logger, Logger* parent)
    : logger_(logger), parent_(parent), levelSetTime_(Time::now().microseconds()) {}

// Dispatching a message

void Logger::Inside::log(Level::LogLevel level, std::string_view text, int line, std::string_view file,
                         MessageType type) {
    MessageFields message(logger_.name_, Time(), level, text, line, file, type, &logger_);
    log(message);
}

/// The place is looked up only for the queue: other messages refer to nothing that must outlive the call.
MessageFields Logger::Inside::fieldsFrom(const Place& place, std::string_view text, TextForm form) {
    return takesValues() || form != TextForm::READY
               ? MessageFields(logger_.name_, Time(), knownPlace(place), text, form, &logger_)
               : MessageFields(logger_.name_, Time(), place.level, text, place.line, place.file, LOG,
                               &logger_);
}

void Logger::Inside::logFrom(const Place& place, std::string_view text, TextForm form) {
    MessageFields message = fieldsFrom(place, text, form);
    log(message);
}

void Logger::Inside::logFrom(const Place& place, std::string_view text, std::string_view pairs) {
    MessageFields message = fieldsFrom(place, text, TextForm::READY);
    message.values = pairs;
    log(message);
}

void Logger::Inside::logFrom(const KnownPlace& place, std::string_view text, TextForm form) {
    MessageFields message(logger_.name_, Time(), place, text, form, &logger_);
    log(message);
}

/// \param message whose time, thread ID and context are still unset
void Logger::Inside::log(MessageFields& message) {
    Platform::actOnCancellation();
    ThreadRecord& thread = threadRecord();
    message.thread = systemIdOf(thread);
    if (thread.context != nullptr) {
        message.context = thread.context->packed();
    }
    const LibraryCall call(thread);
    const bool isLocked = lockFor(call);
    message.time = Time::now();
    if (!isLocked) {
        if (message.type == CFG || passes(message.level, message.time)) {
            defer(message);
        }
        return;
    }
    const ScopedLock lock(criticalSection_, ADOPT_LOCK);
    if (message.type == CFG || passes(message.level, message.time)) {
        ReusedMessage object(message);
        const Dispatch dispatch(object, thread);
        dispatchMessage(object, !call.isNested());
    }
}

/// Takes the lock; a call from inside an appender or a listener does not wait for it.
/// \return false if the message must be deferred: another thread holds the lock, the gate is closed, or
///         earlier messages of this thread were deferred
bool Logger::Inside::lockFor(const LibraryCall& call) {
    if (!call.isNested()) {
        lock();
        return true;
    }
    return !call.hasDeferredMessages() && tryLock();
}

/// Takes the lock to dispatch a message. Not held while waiting for the gate: the thread that closed the gate
/// waits for the lock.
void Logger::Inside::lock() {
    criticalSection_.lock();
    while (DispatchGate::isClosed()) {
        criticalSection_.unlock();
        DispatchGate::awaitOpen();
        criticalSection_.lock();
    }
}

/// The same without blocking.
bool Logger::Inside::tryLock() {
    if (!criticalSection_.tryLock()) {
        return false;
    }
    if (!DispatchGate::isClosed()) {
        return true;
    }
    criticalSection_.unlock();
    return false;
}

/// \return whether a message that reached the level when it was logged still reaches it at `now`
bool Logger::Inside::passes(Level::LogLevel level, Time now) {
    const bool lastsForEver = expirationTime_.load(std::memory_order_relaxed) == 0 &&
                              temporaryUntil_.load(std::memory_order_relaxed) == 0;
    return lastsForEver || passesStill(level, now);
}

/// The rare path, kept out of line.
[[gnu::noinline]] bool Logger::Inside::passesStill(Level::LogLevel level, Time now) {
    if (!isExpired(now) && !needsTemporaryLevel(level)) {
        return true;
    }
    const ScopedLock lock(treeLock());
    if (isExpired(now)) { // unless it was set again meanwhile
        lastingLevel_.store(Level::LEVEL_WARNING, std::memory_order_relaxed);
    } else if (!needsTemporaryLevel(level)) {
        return true;
    }
    renewLevel(now);
    return level >= logger_.storedLevel();
}

bool Logger::Inside::isExpired(Time now) const {
    const Time duration(expirationTime_.load(std::memory_order_relaxed), USEC);
    return duration != Time() && lastingLevel_.load(std::memory_order_relaxed) < Level::LEVEL_WARNING &&
           now > Time(levelSetTime_.load(std::memory_order_relaxed), USEC) + duration;
}

/// \return whether the message passes only because of a temporary level
bool Logger::Inside::needsTemporaryLevel(Level::LogLevel level) const {
    return temporaryUntil_.load(std::memory_order_relaxed) != 0 &&
           level < lastingLevel_.load(std::memory_order_relaxed);
}

/// Delivers a message to the synchronous appenders, and queues it once if there are asynchronous ones.
/// \param mayWaitForRoom whether the call may block while the queue is full
void Logger::Inside::dispatchMessage(ReusedMessage& message, bool mayWaitForRoom) {
    const AppenderList::Outcome outcome =
        appenders_.deliverToSynchronous(message, criticalSection_.isHeldOnce());
    if (outcome.hasAsynchronous) {
        AsynchronousDispatcher::instance().enqueue(message.fields(), mayWaitForRoom);
    }
    if (outcome.exception) {
        std::rethrow_exception(outcome.exception);
    }
}

void Logger::Inside::defer(const MessageFields& message) {
    DeferredMessages::instance().keep(logger_, message, dispatchDeferred);
}

bool Logger::Inside::dispatchDeferred(Logger& logger, bool waitsForLogger) {
    Inside& inside = *logger.inside_;
    if (waitsForLogger) {
        inside.lock();
    } else if (!inside.tryLock()) {
        return false;
    }
    const ScopedLock lock(inside.criticalSection_, ADOPT_LOCK);
    const DeferredMessages::First first;
    if (first.get() != nullptr) {
        const ReportAnswer answer(threadRecord(), first.get()->answeredReports);
        MessageFields fields(first.get()->message);
        fields.loggerName = logger.name_; // which has a stable address
        fields.logger = &logger;
        ReusedMessage message(fields);
        inside.dispatchMessage(message, false);
    }
    return true;
}

bool isListed(const Logger& logger, const Appender* appender) {
    const ScopedLock lock(treeLock());
    return logger.inside_->appenders_.contains(appender);
}

// The lock of the tree, and the gate

namespace {

struct TreeLock : Platform::CriticalSection, Platform::NeverDestroyed<TreeLock> {
    TreeLock() : CriticalSection(Platform::AWAITED_BY_FORK) {}
};

/// Held while the gate is closed.
struct GateLock : Platform::CriticalSection, Platform::NeverDestroyed<GateLock> {};

const TreeLock& treeLockMadeAtLoad = TreeLock::instance();
const GateLock& gateLockMadeAtLoad = GateLock::instance();

} // namespace

Platform::CriticalSection& treeLock() {
    return TreeLock::instance();
}

Platform::CriticalSection& DispatchGate::gateLock() {
    return GateLock::instance();
}

/// The thread that had closed it does not exist in the child.
void DispatchGate::openInChild() {
    closed = false;
}

const bool DispatchGate::isForked = (Platform::atFork(nullptr, openInChild), true);

void DispatchGate::awaitOpen() {
    const ScopedLock lock(gateLock());
}

DispatchGate::Closed::Closed() {
    gateLock().lock();
    closed = true;
}

DispatchGate::Closed::~Closed() {
    closed = false;
    gateLock().unlock();
}

} // namespace Log
} // namespace ZAV
