#pragma once

#include "log/Level.h"
#include "platform/CriticalSection.h"
#include "zav-util/Export.h"
#include "zav-util/TimeUtils.h"

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

class Appender;
class ConfigurationMessage;
class LogMessage;
class LoggingScope;

/// A node in the tree of named loggers. `LoggerFactory` hands loggers out; references to them stay valid
/// until the process ends.
///
/// Levels, expiration durations and appenders that are set on a logger spread to its whole subtree at that
/// moment, and a new logger copies them from its parent; a logging call asks this logger alone. All
/// operations may be called from any thread. Locks are taken from a parent to its children, never the other
/// way. Looking a logger up, and making one, never waits for a logger that is writing.
class Logger {
public:
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// \return the full dotted name; "root" for the root logger
    const std::string& getName() const noexcept { return name_; }

    /// \return the level in force, read without a lock; an expired level shows until a message is logged
    Level::LogLevel getLevel() const noexcept { return level_.load(std::memory_order_relaxed); }

    /// \return whether a message of that level would pass, read without a lock
    bool isLoggable(Level::LogLevel level) const noexcept { return level >= getLevel(); }

    /// Logs a message; below the logger's level the call costs one comparison.
    ///
    /// Synchronous appenders write it before the call returns; only a call from an appender or a command
    /// listener may be made later. Failures of appenders become the command "EXCEPTION" and do not reach the
    /// caller; what a listener of that command throws does.
    /// \param text written as it is
    /// \param line source line; 0 or less if none is given
    /// \param file source file; empty if none is given
    void audit(const std::string& text, int line, const std::string& file) {
        log(Level::LEVEL_AUDIT, text, line, file);
    }
    /// \copydoc audit
    void error(const std::string& text, int line, const std::string& file) {
        log(Level::LEVEL_ERROR, text, line, file);
    }
    /// \copydoc audit
    void warning(const std::string& text, int line, const std::string& file) {
        log(Level::LEVEL_WARNING, text, line, file);
    }
    /// \copydoc audit
    void info(const std::string& text, int line, const std::string& file) {
        log(Level::LEVEL_INFO, text, line, file);
    }
    /// \copydoc audit
    void debug(const std::string& text, int line, const std::string& file) {
        log(Level::LEVEL_DEBUG, text, line, file);
    }
    /// \copydoc audit
    void trace(const std::string& text, int line, const std::string& file) {
        log(Level::LEVEL_TRACE, text, line, file);
    }

    /// Logs a configuration message: type `CFG`, level `AUDIT`, whatever the logger's level. It is written,
    /// and its failures are reported, as those of `audit` are.
    ZAV_LOG_API void config(const ConfigurationMessage& message);

    /// Sets the level of this logger and of its whole subtree, and starts their expiration anew.
    /// \param notify whether to issue the command "DynamicLogLevelFilterSoft" first, which lowers the dynamic
    ///        filters of the appenders to that level; what its listeners throw reaches the caller, and the
    ///        level is then not set
    ZAV_LOG_API void setLevel(Level::LogLevel level, bool notify);

    /// Sets for this logger and its whole subtree how long a level below `WARNING` lasts, counted from the
    /// moment at which the level was set. The first message after that takes the level back to `WARNING`.
    /// \param duration 0 for ever
    ZAV_LOG_API void setExpirationTime(const Util::TimeUtils::Time& duration);

    /// \return how long a level below `WARNING` lasts; 0 for ever
    ZAV_LOG_API Util::TimeUtils::Time getExpirationTime() const;

    /// Adds an appender to this logger and its whole subtree, present and future. An appender that is added
    /// twice writes each message twice.
    /// \param appender not null, not owned; must live until it was removed
    ZAV_LOG_API void addAppender(Appender* appender);

    /// Removes all entries of an appender from this logger and its subtree. Once it returns, none of these
    /// loggers is calling the appender.
    ZAV_LOG_API void removeAppender(Appender* appender);

private:
    friend class LoggerFactory;

    /// Lets the map of children destroy them, and nobody else.
    struct Deleter {
        void operator()(Logger* logger) const { delete logger; }
    };
    using Children = std::map<std::string, std::unique_ptr<Logger, Deleter>>;

    Logger(Logger* parent, const std::string& shortName);
    ~Logger() = default;

    void log(Level::LogLevel level, const std::string& text, int line, const std::string& file) {
        if (isLoggable(level)) {
            logLoggable(level, text, line, file);
        }
    }

    ZAV_LOG_API void logLoggable(Level::LogLevel level, const std::string& text, int line,
                                 const std::string& file);
    void dispatchMessage(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_);
    bool isExpired(Util::TimeUtils::Time now) const ZAV_LOG_REQUIRES(criticalSection_);
    bool lockFrom(const LoggingScope& scope) ZAV_LOG_TRY_ACQUIRE(true, criticalSection_);

    Logger& getLogger(const std::string& path);
    const Logger* findLogger(const std::string& path) const;
    std::vector<std::string> getLoggerNames() const;
    Logger& getChild(const std::string& shortName);
    Logger* findChild(const std::string& shortName) const;
    std::vector<Logger*> getChildren() const ZAV_LOG_REQUIRES(treeLock_);

    Logger* const parent_;
    std::string name_; ///< never changes after the construction
    /// Written under the lock, read without it.
    std::atomic<Level::LogLevel> level_;
    Util::TimeUtils::Time levelSetTime_ ZAV_LOG_GUARDED_BY(criticalSection_);
    // Inherited by new children: they change under both locks, so that either one is enough to read them.
    Util::TimeUtils::Time expirationTime_ ZAV_LOG_GUARDED_BY(criticalSection_);
    std::list<Appender*> appenders_ ZAV_LOG_GUARDED_BY(criticalSection_);
    /// Held while a message is dispatched, and while a setting changes and spreads.
    mutable Platform::CriticalSection criticalSection_;

    /// Guards the children and what a new one inherits. Nothing is waited for while it is held, so that
    /// loggers can be looked up and made from anywhere, also from inside an appender or a listener.
    mutable Platform::CriticalSection treeLock_;
    /// By the short name: one component of the dotted name. None is removed.
    Children children_ ZAV_LOG_GUARDED_BY(treeLock_);
};

} // namespace Log
} // namespace ZAV
