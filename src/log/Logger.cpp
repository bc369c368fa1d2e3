#include "log/Logger.h"

#include "log/Appender.h"
#include "log/ConfigurationMessage.h"
#include "log/LogManager.h"
#include "log/LogMessage.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/commands/LoggingScope.h"

#include <exception>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ADOPT_LOCK;
using Platform::ScopedLock;
using Util::TimeUtils::Time;

// The road of a message

// What can be done without the lock is: the strings are copied before it is taken, and the message is freed
// after it is released, since all threads that log through one logger wait for each other there.

void Logger::logLoggable(Level::LogLevel level, const std::string& text, int line, const std::string& file) {
    std::unique_ptr<const LogMessage> message;
    std::string ownText = text;
    std::string ownFile = file;
    LoggingScope scope;
    if (!lockFrom(scope)) {
        scope.defer([this, level, ownText, line, ownFile] { log(level, ownText, line, ownFile); });
        return;
    }
    const ScopedLock lock(criticalSection_, ADOPT_LOCK);
    const Time now = Time::now();
    if (isExpired(now)) {
        level_.store(Level::LEVEL_WARNING, std::memory_order_relaxed);
        if (level < Level::LEVEL_WARNING) {
            return;
        }
    }
    message = std::make_unique<const LogMessage>(name_, now, level, std::move(ownText), line,
                                                 std::move(ownFile), LOG);
    dispatchMessage(*message);
}

void Logger::config(const ConfigurationMessage& configuration) {
    std::unique_ptr<const LogMessage> message;
    std::string ownText = configuration.getText();
    LoggingScope scope;
    if (!lockFrom(scope)) {
        scope.defer([this, configuration] { config(configuration); });
        return;
    }
    const ScopedLock lock(criticalSection_, ADOPT_LOCK);
    message = std::make_unique<const LogMessage>(name_, Time::now(), Level::LEVEL_AUDIT, std::move(ownText),
                                                 0, std::string(), CFG);
    dispatchMessage(*message);
}

void Logger::dispatchMessage(const LogMessage& message) {
    bool hasAsynchronousAppender = false;
    std::exception_ptr exception;
    for (Appender* const appender : appenders_) {
        if (!appender->isSynchronous()) {
            hasAsynchronousAppender = true;
            continue;
        }
        try {
            appender->output(message);
        } catch (...) {
            // A listener or a filter that throws for one appender must not keep the message from the others.
            if (!exception) {
                exception = std::current_exception();
            }
        }
    }
    if (hasAsynchronousAppender) {
        AsynchronousDispatcher::instance().enqueue(message);
    }
    if (exception) {
        std::rethrow_exception(exception);
    }
}

bool Logger::isExpired(Time now) const {
    return expirationTime_ != Time() && getLevel() < Level::LEVEL_WARNING &&
           now > levelSetTime_ + expirationTime_;
}

/// Takes the lock; a call from an appender or a listener does not wait for it.
/// \return false if another thread holds it
bool Logger::lockFrom(const LoggingScope& scope) {
    if (scope.isNested()) {
        return criticalSection_.tryLock();
    }
    criticalSection_.lock();
    return true;
}

// Settings, which spread to the subtree: a setting changes and the children are listed in one step, so that a
// child that is made meanwhile either inherits the change or hears of it, and never both.

void Logger::setLevel(Level::LogLevel level, bool notify) {
    if (notify) {
        LogManager::command("DynamicLogLevelFilterSoft", Level::toString(level));
    }
    const ScopedLock lock(criticalSection_);
    std::vector<Logger*> children;
    {
        const ScopedLock treeLock(treeLock_);
        level_.store(level, std::memory_order_relaxed);
        children = getChildren();
    }
    levelSetTime_ = Time::now();
    for (Logger* const child : children) {
        child->setLevel(level, false);
    }
}

void Logger::setExpirationTime(const Time& duration) {
    const ScopedLock lock(criticalSection_);
    std::vector<Logger*> children;
    {
        const ScopedLock treeLock(treeLock_);
        expirationTime_ = duration;
        children = getChildren();
    }
    for (Logger* const child : children) {
        child->setExpirationTime(duration);
    }
}

Time Logger::getExpirationTime() const {
    const ScopedLock lock(criticalSection_);
    return expirationTime_;
}

void Logger::addAppender(Appender* appender) {
    const ScopedLock lock(criticalSection_);
    std::vector<Logger*> children;
    {
        const ScopedLock treeLock(treeLock_);
        appenders_.push_back(appender);
        children = getChildren();
    }
    for (Logger* const child : children) {
        child->addAppender(appender);
    }
}

void Logger::removeAppender(Appender* appender) {
    const ScopedLock lock(criticalSection_);
    std::vector<Logger*> children;
    {
        const ScopedLock treeLock(treeLock_);
        appenders_.remove(appender);
        children = getChildren();
    }
    for (Logger* const child : children) {
        child->removeAppender(appender);
    }
}

// The tree

Logger::Logger(Logger* parent, const std::string& shortName)
    : parent_(parent), name_(shortName), level_(Level::LEVEL_WARNING), levelSetTime_(Time::now()) {
    if (parent_ == nullptr) {
        return;
    }
    // The parent, which makes the child, holds its `treeLock_` meanwhile: that is enough to read what changes
    // under both of its locks.
    parent_->criticalSection_.assumeExclusive();
    level_.store(parent_->getLevel(), std::memory_order_relaxed);
    expirationTime_ = parent_->expirationTime_;
    appenders_ = parent_->appenders_;
    const bool parentIsRoot = parent_->parent_ == nullptr;
    if (!parentIsRoot) {
        name_ = parent_->name_ + "." + shortName;
    }
}

namespace {

struct SplitPath {
    std::string head; ///< what stands before the first dot; empty if there is none
    std::string rest;
    bool hasDot;
};

SplitPath splitAtFirstDot(const std::string& path) {
    const std::string::size_type dot = path.find('.');
    if (dot == std::string::npos) {
        return {std::string(), path, false};
    }
    return {path.substr(0, dot), path.substr(dot + 1), true};
}

} // namespace

Logger& Logger::getLogger(const std::string& path) {
    const SplitPath split = splitAtFirstDot(path);
    return split.hasDot ? getChild(split.head).getLogger(split.rest) : getChild(path);
}

const Logger* Logger::findLogger(const std::string& path) const {
    const SplitPath split = splitAtFirstDot(path);
    if (split.head.empty()) {
        return findChild(split.rest);
    }
    const Logger* const child = findChild(split.head);
    return child == nullptr ? nullptr : child->findLogger(split.rest);
}

std::vector<std::string> Logger::getLoggerNames() const {
    std::vector<Logger*> children;
    {
        const ScopedLock lock(treeLock_);
        children = getChildren();
    }
    std::vector<std::string> names;
    for (const Logger* const child : children) {
        names.push_back(child->getName());
        const std::vector<std::string> below = child->getLoggerNames();
        names.insert(names.end(), below.begin(), below.end());
    }
    return names;
}

Logger& Logger::getChild(const std::string& shortName) {
    const ScopedLock lock(treeLock_);
    const auto entry = children_.find(shortName);
    if (entry != children_.end()) {
        return *entry->second;
    }
    Children::mapped_type child(new Logger(this, shortName));
    return *children_.emplace(shortName, std::move(child)).first->second;
}

Logger* Logger::findChild(const std::string& shortName) const {
    const ScopedLock lock(treeLock_);
    const auto entry = children_.find(shortName);
    return entry == children_.end() ? nullptr : entry->second.get();
}

std::vector<Logger*> Logger::getChildren() const {
    std::vector<Logger*> children;
    children.reserve(children_.size());
    for (const auto& child : children_) {
        children.push_back(child.second.get());
    }
    return children;
}

} // namespace Log
} // namespace ZAV
