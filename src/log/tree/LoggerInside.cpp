#include "log/tree/LoggerInside.h"

#include "log/async/AsynchronousDispatcher.h"
#include "log/filters/TemporaryLevels.h"
#include "log/message/ReusedMessage.h"
#include "log/reentrancy/LibraryCall.h"
#include "log/reentrancy/PutOffMessages.h"
#include "log/reentrancy/ThreadContext.h"
#include "log/tree/SubtreeCapture.h"
#include "log/tree/TreeLock.h"
#include "platform/Threads.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <thread>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ADOPT_LOCK;
using Platform::ScopedLock;
using namespace Util::TimeUtils;

Logger::Inside::Inside(Logger& logger, Logger* parent)
    : logger_(logger), parent_(parent), levelSetTime_(Time::now().microseconds()) {}

// The road of a message

void Logger::Inside::log(Level::LogLevel level, std::string_view text, int line, std::string_view file,
                         MessageType type) {
    MessageFields message(logger_.name_, Time(), level, text, line, file, type, &logger_);
    log(message);
}

/// The place is looked up only for the queue, since other messages hold nothing beyond the call.
void Logger::Inside::logFrom(const Place& place, std::string_view text, TextForm form,
                             std::string_view pairs) {
    if (takesValues() || form != TextForm::READY) {
        MessageFields message(logger_.name_, Time(), knownPlace(place), text, form, &logger_);
        message.values = pairs;
        log(message);
    } else {
        MessageFields message(logger_.name_, Time(), place.level, text, place.line, place.file, LOG,
                              &logger_);
        message.values = pairs;
        log(message);
    }
}

void Logger::Inside::logFrom(const KnownPlace& place, std::string_view text, TextForm form) {
    MessageFields message(logger_.name_, Time(), place, text, form, &logger_);
    log(message);
}

/// \param message without a time and what its thread adds
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
            putOff(message);
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

/// Takes the lock; a call from an appender or a listener does not wait for it.
/// \return false if the message has to be put off: another thread holds the lock, the gate is closed, or
///         earlier messages of this thread were put off
bool Logger::Inside::lockFor(const LibraryCall& call) {
    if (!call.isNested()) {
        lock();
        return true;
    }
    return !call.hasPutOffMessages() && tryLock();
}

/// Takes the lock to dispatch a message. It is not held while the thread waits for the gate: whoever has
/// closed that waits for the lock.
void Logger::Inside::lock() {
    criticalSection_.lock();
    while (DispatchGate::isClosed()) {
        criticalSection_.unlock();
        DispatchGate::awaitOpen();
        criticalSection_.lock();
    }
}

/// The same without waiting for anything.
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

/// \return whether a message that reached the level when it was logged still does at this moment
bool Logger::Inside::passes(Level::LogLevel level, Time now) {
    const bool lastsForEver = expirationTime_.load(std::memory_order_relaxed) == 0 &&
                              temporaryUntil_.load(std::memory_order_relaxed) == 0;
    return lastsForEver || passesStill(level, now);
}

/// Not inline, since levels seldom expire.
[[gnu::noinline]] bool Logger::Inside::passesStill(Level::LogLevel level, Time now) {
    if (!isExpired(now) && !needsTemporaryLevel(level)) {
        return true;
    }
    const ScopedLock lock(treeLock());
    if (isExpired(now)) { // and was not set anew meanwhile
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

/// \return whether the logger would stop a message but for a level that lasts for a while
bool Logger::Inside::needsTemporaryLevel(Level::LogLevel level) const {
    return temporaryUntil_.load(std::memory_order_relaxed) != 0 &&
           level < lastingLevel_.load(std::memory_order_relaxed);
}

/// Gives a message to the synchronous appenders, and queues it once if there are asynchronous ones.
/// \param mayWait whether it may wait for room in the queue
void Logger::Inside::dispatchMessage(ReusedMessage& message, bool mayWait) {
    const AppenderList::Outcome outcome =
        appenders_.giveToSynchronous(message, criticalSection_.isHeldOnce());
    if (outcome.hasAsynchronous) {
        AsynchronousDispatcher::instance().enqueue(message.fields(), mayWait);
    }
    if (outcome.exception) {
        std::rethrow_exception(outcome.exception);
    }
}

void Logger::Inside::putOff(const MessageFields& message) {
    PutOffMessages::instance().keep(logger_, message, dispatchPutOff);
}

bool Logger::Inside::dispatchPutOff(Logger& logger, bool mayWait) {
    Inside& inside = *logger.inside_;
    if (mayWait) {
        inside.lock();
    } else if (!inside.tryLock()) {
        return false;
    }
    const ScopedLock lock(inside.criticalSection_, ADOPT_LOCK);
    const PutOffMessages::First first;
    if (first.get() != nullptr) {
        const ReportAnswer answer(threadRecord(), first.get()->answeredReports);
        MessageFields fields(first.get()->message);
        fields.loggerName = logger.name_; // which stays where it is
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

// The subtree

void Logger::Inside::inherit() {
    const Inside& parent = *parent_->inside_;
    lastingLevel_.store(parent.lastingLevel_, std::memory_order_relaxed);
    overruledNumber_ = parent.overruledNumber_;
    renewLevel(Time(levelSetTime_, USEC));
    expirationTime_.store(parent.expirationTime_, std::memory_order_relaxed);
    appenders_.copyFrom(parent.appenders_);
}

void Logger::Inside::setLevel(Level::LogLevel level, Time now) {
    levelSetTime_.store(now.microseconds(), std::memory_order_relaxed);
    lastingLevel_.store(level, std::memory_order_relaxed);
    overruledNumber_ = TemporaryLevels::instance().newestNumber();
    temporaryUntil_.store(0, std::memory_order_relaxed);
    renewLevel(now);
}

/// Of several levels that hold, the one that ends first tells when to look again.
void Logger::Inside::renewLevel(Time now) {
    const Level::LogLevel lasting = lastingLevel_.load(std::memory_order_relaxed);
    Level::LogLevel level = lasting;
    std::uint64_t until = 0;
    TemporaryLevels::instance().forEachLasting(now, overruledNumber_, [&](const TemporaryLevel& temporary) {
        if (isBelow(*temporary.logger)) {
            level = std::min(level, temporary.level);
            const std::uint64_t end = temporary.until.microseconds();
            until = until == 0 ? end : std::min(until, end);
        }
    });
    if (until != 0) {
        temporaryUntil_.store(until, std::memory_order_relaxed);
    }
    logger_.isTemporary_.store(level < lasting, std::memory_order_relaxed);
    logger_.level_.store(SubtreeCapture::lowestLevel(logger_, level), std::memory_order_relaxed);
}

Level::LogLevel Logger::Inside::levelAt(Time now) noexcept {
    if (now.microseconds() > temporaryUntil_.load(std::memory_order_relaxed)) {
        const ScopedLock lock(treeLock());
        renewLevel(now);
    }
    return logger_.storedLevel();
}

bool Logger::Inside::isBelow(const Logger& top) const {
    const Logger* logger = &logger_;
    while (logger != nullptr && logger != &top) {
        logger = logger->inside_->parent_;
    }
    return logger != nullptr;
}

std::size_t Logger::Inside::countSubtree() {
    std::size_t count = 0;
    forSubtree([&count](const Logger&) { ++count; });
    return count;
}

/// It takes no memory, since the end of the library must not fail. No logger ever leaves the tree, and one
/// that is added meanwhile has inherited what is being waited for.
void Logger::Inside::waitForSubtree() {
    for (Inside* inside = this; inside != nullptr;) {
        inside->criticalSection_.awaitHolder();
        const ScopedLock lock(treeLock());
        inside = inside->nextBelow(*this);
    }
}

/// Of those who wait for the lock each gets it in its turn, so this does not take it from anybody for long.
bool Logger::Inside::waitForSubtree(std::chrono::steady_clock::time_point end) {
    for (Inside* inside = this; inside != nullptr;) {
        while (!inside->criticalSection_.tryLock()) {
            if (std::chrono::steady_clock::now() >= end) {
                return false;
            }
            if (!Platform::sleepBriefly()) {
                std::this_thread::yield();
            }
        }
        inside->criticalSection_.unlock();
        const ScopedLock lock(treeLock());
        inside = inside->nextBelow(*this);
    }
    return true;
}

Logger::Inside* Logger::Inside::nextBelow(const Inside& top) {
    if (!children_.empty()) {
        return children_.begin()->second->inside_.get();
    }
    for (Inside* inside = this; inside != &top; inside = inside->parent_->inside_.get()) {
        const auto sibling = std::next(inside->place_);
        if (sibling != inside->parent_->inside_->children_.end()) {
            return sibling->second->inside_.get();
        }
    }
    return nullptr;
}

Logger& Logger::Inside::getChild(std::string_view shortName) {
    if (Logger* const child = findChild(shortName)) {
        return *child;
    }
    Children::mapped_type made(new Logger(&logger_, std::string(shortName)));
    Logger& child = *made;
    child.inside_->place_ = children_.emplace(shortName, std::move(made)).first;
    return child;
}

Logger* Logger::Inside::findChild(std::string_view shortName) const {
    const auto entry = children_.find(shortName);
    return entry == children_.end() ? nullptr : entry->second.get();
}

} // namespace Log
} // namespace ZAV
