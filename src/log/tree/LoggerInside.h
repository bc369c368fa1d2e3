#pragma once

#include "log/Logger.h"
#include "log/message/MessageFields.h"
#include "log/tree/AppenderList.h"
#include "log/tree/TreeLock.h"
#include "platform/CriticalSection.h"
#include "zav-util/TimeUtils.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace ZAV {
namespace Log {

class LibraryCall;

/// Implementation of a logger, hidden from applications.
struct Logger::Inside {
    /// Lets only the map of children destroy them.
    struct Deleter {
        void operator()(Logger* logger) const { delete logger; }
    };
    using Children = std::map<std::string, std::unique_ptr<Logger, Deleter>, std::less<>>;

    Inside(Logger& logger, Logger* parent);
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

    /// Creates a message that has reached the logger's level and dispatches it to the appenders, unless the
    /// level has expired.
    void log(Level::LogLevel level, std::string_view text, int line, std::string_view file, MessageType type);

    /// The same for a message from a place in the program, which may carry values instead of its text.
    /// \param pairs the message's own pairs, packed
    void logFrom(const Place& place, std::string_view text, TextForm form, std::string_view pairs = {});
    void logFrom(const KnownPlace& place, std::string_view text, TextForm form);

    /// \return whether the text need not be formatted in the call because, as far as is known, all appenders
    ///         are asynchronous
    bool takesValues() const noexcept { return appenders_.areAsynchronous(); }

    /// Copies the settings and appenders of the parent to this new logger.
    void inherit() ZAV_LOG_REQUIRES(treeLock());

    /// \return the child with that short name, created if missing
    Logger& getChild(std::string_view shortName) ZAV_LOG_REQUIRES(treeLock());
    Logger* findChild(std::string_view shortName) const ZAV_LOG_REQUIRES(treeLock());

    /// Calls a function for every logger of the subtree, parents before their children.
    template <typename Function>
    void forSubtree(const Function& function) ZAV_LOG_REQUIRES(treeLock()) {
        for (Inside* inside = this; inside != nullptr; inside = inside->nextBelow(*this)) {
            function(inside->logger_);
        }
    }

    /// Sets the level; overrides earlier temporary levels.
    void setLevel(Level::LogLevel level, Util::TimeUtils::Time now) ZAV_LOG_REQUIRES(treeLock());

    /// Computes the level in force at a time: the lasting one, or a lower one from a temporary level or a
    /// capture.
    void renewLevel(Util::TimeUtils::Time now) ZAV_LOG_REQUIRES(treeLock());

    /// \return the level at a time, for a logger with a temporary level
    Level::LogLevel levelAt(Util::TimeUtils::Time now) noexcept ZAV_LOG_EXCLUDES(treeLock());

    /// \return whether this logger is in the subtree of another
    bool isBelow(const Logger& top) const;

    /// \return the number of loggers in the subtree
    std::size_t countSubtree() ZAV_LOG_REQUIRES(treeLock());

    /// Waits, for one logger of the subtree after another, until a dispatch in progress in another thread has
    /// finished.
    void waitForSubtree() ZAV_LOG_EXCLUDES(treeLock());

    /// The same with a deadline.
    /// \return false if a dispatch was still in progress at the deadline
    bool waitForSubtree(std::chrono::steady_clock::time_point end) ZAV_LOG_EXCLUDES(treeLock());

    Logger& logger_;
    Logger* const parent_;
    // Written under the tree's lock, read without it; times are in microseconds.
    std::atomic<std::uint64_t> expirationTime_{0}; ///< 0: a level below `WARNING` does not expire
    std::atomic<std::uint64_t> levelSetTime_;
    std::atomic<Level::LogLevel> lastingLevel_{Level::LEVEL_WARNING}; ///< in force after temporary levels end
    /// When the level has to be recomputed; 0 if no temporary level has applied since it was set.
    std::atomic<std::uint64_t> temporaryUntil_{0};
    /// Temporary levels up to this number are older than the level, which overrides them.
    std::uint64_t overruledNumber_ ZAV_LOG_GUARDED_BY(treeLock()) = 0;
    AppenderList appenders_;
    /// Held during a dispatch: the messages of one logger reach its appenders one at a time.
    mutable Platform::CriticalSection criticalSection_;
    /// By short name: one component of the dotted name. Children are never removed.
    Children children_ ZAV_LOG_GUARDED_BY(treeLock());

private:
    void log(MessageFields& message);
    bool lockFor(const LibraryCall& call) ZAV_LOG_TRY_ACQUIRE(true, criticalSection_);
    void lock() ZAV_LOG_ACQUIRE(criticalSection_);
    bool tryLock() ZAV_LOG_TRY_ACQUIRE(true, criticalSection_);
    bool passes(Level::LogLevel level, Util::TimeUtils::Time now);
    bool passesStill(Level::LogLevel level, Util::TimeUtils::Time now);
    bool isExpired(Util::TimeUtils::Time now) const;
    bool needsTemporaryLevel(Level::LogLevel level) const;
    void dispatchMessage(ReusedMessage& message, bool mayWaitForRoom) ZAV_LOG_REQUIRES(criticalSection_);
    void defer(const MessageFields& message);
    static bool dispatchDeferred(Logger& logger, bool waitsForLogger);

    /// One step of a traversal without allocation or recursion, however deep the tree is.
    /// \return the logger after this one in the subtree of `top`, children first; null at the end
    Inside* nextBelow(const Inside& top) ZAV_LOG_REQUIRES(treeLock());

    /// Position among the parent's children; unset for the root.
    Children::iterator place_ ZAV_LOG_GUARDED_BY(treeLock());
};

/// \return whether a logger currently lists an appender
bool isListed(const Logger& logger, const Appender* appender);

} // namespace Log
} // namespace ZAV
