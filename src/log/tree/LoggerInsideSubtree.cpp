// A logger's inheritance from its parent and operations on its subtree: settings, temporary levels, captures,
// traversal.

#include "log/tree/LoggerInside.h"

#include "log/filters/TemporaryLevels.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Threads.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <thread>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;
using namespace Util::TimeUtils;

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

/// With several temporary levels in force, the earliest end determines the next recomputation.
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

/// Allocates nothing, since shutting down must not fail. No logger ever leaves the tree, and one added
/// meanwhile has inherited the new state.
void Logger::Inside::waitForSubtree() {
    for (Inside* inside = this; inside != nullptr;) {
        inside->criticalSection_.awaitHolder();
        const ScopedLock lock(treeLock());
        inside = inside->nextBelow(*this);
    }
}

/// It only tries the lock, so no thread waits for it in turn.
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

// Temporary levels and captures

namespace {

/// \return the sum, saturated at the maximum
Time endOf(Time begin, Time duration) {
    const Time end = begin + duration;
    return end < begin ? Time(std::numeric_limits<std::uint64_t>::max(), USEC) : end;
}

} // namespace

void SubtreeLevel::setFor(Logger& logger, Level::LogLevel level, Time duration) {
    const ScopedLock lock(treeLock());
    const Time now = Time::now();
    if (duration == Time()) {
        TemporaryLevels::instance().endWhere([&](const Logger* other) { return other == &logger; }, now);
    } else {
        TemporaryLevels::instance().set(&logger, level, now, endOf(now, duration));
    }
    logger.inside_->forSubtree([now](Logger& below)
                                   ZAV_LOG_REQUIRES(treeLock()) { below.inside_->renewLevel(now); });
}

SubtreeCapture* SubtreeCapture::newest = nullptr;

SubtreeCapture::SubtreeCapture(Logger& logger, Level::LogLevel level, bool passesOn, Appender& recorder)
    : logger_(logger), level_(level), passesOn_(passesOn), recorder_(recorder) {
    {
        const ScopedLock lock(treeLock());
        logger.addAppender(&recorder); // allocates everything before anything changes
        older_ = newest;
        newest = this;
        renewSubtree();
    }
    awaitDispatches();
}

/// The level is reset first: messages that passed only because of it must be dispatched before the other
/// appenders get messages again.
SubtreeCapture::~SubtreeCapture() {
    {
        const ScopedLock lock(treeLock());
        level_ = Level::LEVEL_AUDIT;
        renewSubtree();
    }
    awaitDispatches();
    {
        const ScopedLock lock(treeLock());
        SubtreeCapture** link = &newest;
        while (*link != this) {
            link = &(*link)->older_;
        }
        *link = older_;
        renewSubtree();
    }
    logger_.removeAppender(&recorder_);
}

/// Waits for dispatches in progress, unless called from inside an appender or a listener.
void SubtreeCapture::awaitDispatches() {
    if (!passesOn_ && !LibraryCall::isOpen()) {
        logger_.inside_->waitForSubtree();
    }
}

void SubtreeCapture::renewSubtree() {
    const Time now = Time::now();
    logger_.inside_->forSubtree([now](Logger& logger) ZAV_LOG_REQUIRES(treeLock()) {
        logger.inside_->renewLevel(now);
        logger.inside_->appenders_.setMuted(isMuted(logger));
    });
}

Level::LogLevel SubtreeCapture::lowestLevel(const Logger& logger, Level::LogLevel level) {
    for (const SubtreeCapture* capture = newest; capture != nullptr; capture = capture->older_) {
        if (capture->level_ < level && logger.inside_->isBelow(capture->logger_)) {
            level = capture->level_;
        }
    }
    return level;
}

bool SubtreeCapture::isMuted(const Logger& logger) {
    for (const SubtreeCapture* capture = newest; capture != nullptr; capture = capture->older_) {
        if (!capture->passesOn_ && logger.inside_->isBelow(capture->logger_)) {
            return true;
        }
    }
    return false;
}

bool SubtreeCapture::isRecorder(const Appender* appender) {
    for (const SubtreeCapture* capture = newest; capture != nullptr; capture = capture->older_) {
        if (&capture->recorder_ == appender) {
            return true;
        }
    }
    return false;
}

} // namespace Log
} // namespace ZAV
