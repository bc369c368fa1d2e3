#pragma once

#include "log/Level.h"
#include "zav-util/Export.h"
#include "zav-util/TimeUtils.h"

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

class Appender;
class ConfigurationMessage;

/// A node in the tree of named loggers. `LoggerFactory` hands loggers out; references to them stay valid
/// until the process ends.
///
/// Levels, expiration durations and appenders that are set on a logger spread to its whole subtree in one
/// step, and a new logger copies them from its parent; a logging call asks this logger alone. All operations
/// may be called from any thread, from an appender and from a command listener. The messages of one logger
/// are dispatched one at a time; looking a logger up, making one and changing its settings never waits for
/// that.
class Logger {
public:
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// \return the full dotted name; "root" for the root logger
    const std::string& getName() const noexcept { return name_; }

    /// \return the level in force, read without a lock; an expired level shows until a message is logged, and
    ///         one of `LogManager::setLevelFor` until its time is over
    Level::LogLevel getLevel() const noexcept {
        return isTemporary_.load(std::memory_order_relaxed) ? temporaryLevel() : storedLevel();
    }

    /// \return whether a message of that level would pass, read without a lock
    bool isLoggable(Level::LogLevel level) const noexcept {
        return level >= storedLevel() &&
               (!isTemporary_.load(std::memory_order_relaxed) || level >= temporaryLevel());
    }

    /// Logs a message; below the logger's level the call costs one comparison.
    ///
    /// Synchronous appenders write it before the call returns. Only a message that an appender or a command
    /// listener logs may be written later: it is stamped and judged by the level at once, and written in its
    /// order when that appender's or listener's own call is over. Failures of appenders become the command
    /// "EXCEPTION" and do not reach the caller; what a listener of that command throws does, and
    /// `std::bad_alloc`.
    /// \param text written as it is
    /// \param line source line; 0 or less if none is given
    /// \param file source file; empty if none is given
    void audit(const std::string& text, int line = 0, const std::string& file = std::string()) {
        log(Level::LEVEL_AUDIT, text, line, file);
    }
    /// \copydoc audit
    void error(const std::string& text, int line = 0, const std::string& file = std::string()) {
        log(Level::LEVEL_ERROR, text, line, file);
    }
    /// \copydoc audit
    void warning(const std::string& text, int line = 0, const std::string& file = std::string()) {
        log(Level::LEVEL_WARNING, text, line, file);
    }
    /// \copydoc audit
    void info(const std::string& text, int line = 0, const std::string& file = std::string()) {
        log(Level::LEVEL_INFO, text, line, file);
    }
    /// \copydoc audit
    void debug(const std::string& text, int line = 0, const std::string& file = std::string()) {
        log(Level::LEVEL_DEBUG, text, line, file);
    }
    /// \copydoc audit
    void trace(const std::string& text, int line = 0, const std::string& file = std::string()) {
        log(Level::LEVEL_TRACE, text, line, file);
    }

    /// Logs a configuration message: type `CFG`, level `AUDIT`, whatever the logger's level. It is written,
    /// and its failures are reported, as those of `audit` are.
    ZAV_LOG_API void config(const ConfigurationMessage& message);

    /// Sets the level of this logger and of its whole subtree, and starts their expiration anew. What
    /// `LogManager::setLevelFor` has set for one of these loggers ends with it.
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
    /// loggers is calling the appender. Only if it is called from an appender or a command listener, for
    /// example by an appender that removes itself, it does not wait: other threads may be inside the appender
    /// for a moment longer.
    ZAV_LOG_API void removeAppender(Appender* appender);

private:
    friend class LoggerFactory;
    friend class FormattedMessage;
    friend class MessageStream;
    friend class MessageWithValues;
    friend bool isListed(const Logger& logger, const Appender* appender);
    friend struct SubtreeLevel;
    friend class SubtreeCapture;
    friend class TreeChange;
    struct Inside;

    Logger(Logger* parent, const std::string& shortName);
    ~Logger();

    void log(Level::LogLevel level, const std::string& text, int line, const std::string& file) {
        if (level >= storedLevel()) {
            logPassed(level, text, line, file);
        }
    }

    Level::LogLevel storedLevel() const noexcept { return level_.load(std::memory_order_relaxed); }

    /// \return the level at this moment, while it is one that lasts for a while
    ZAV_LOG_API Level::LogLevel temporaryLevel() const noexcept;

    /// Logs a message that has passed the first comparison.
    ZAV_LOG_API void logPassed(Level::LogLevel level, std::string_view text, int line,
                               std::string_view file) const;

    Logger& getLogger(const std::string& path);
    const Logger* findLogger(const std::string& path) const;
    std::vector<std::string> getLoggerNames() const;

    std::string name_; ///< never changes after the construction
    std::atomic<Level::LogLevel> level_;
    std::atomic<bool> isTemporary_{false}; ///< whether the level is lower than the one that it goes back to
    const std::unique_ptr<Inside> inside_;
};

} // namespace Log
} // namespace ZAV
