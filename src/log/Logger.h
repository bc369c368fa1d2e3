#pragma once

/// \file
/// Logs messages with a given text, and changes levels and appenders. The macros of `log/LogMacros.h` also
/// build the text, and only if it is needed:
///
///     #include "log/LoggerFactory.h"
///
///     void onConnected(const std::string& peer) {
///         static ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("net.tcp");
///         logger.info("connected to " + peer, __LINE__, __FILE__);
///     }

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

/// A node in the tree of named loggers. `LoggerFactory` returns loggers; references to them stay valid until
/// the process ends.
///
/// Levels, expiration times and appenders that are set on a logger are set for its whole subtree in one step,
/// and a new logger copies them from its parent, so a logging call only looks at its own logger. All
/// functions may be called from any thread, from an appender and from a command listener. The messages of one
/// logger are dispatched one at a time; looking up or creating a logger and changing its settings never waits
/// for that.
class Logger {
public:
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// \return the full dotted name; "root" for the root logger
    const std::string& getName() const noexcept { return name_; }

    /// \return the current level, read without a lock; an expired level is returned until the next message is
    ///         logged; a level set by `LogManager::setLevelFor` only until its time is over
    Level::LogLevel getLevel() const noexcept {
        return isTemporary_.load(std::memory_order_relaxed) ? temporaryLevel() : storedLevel();
    }

    /// \return whether a message of that level would pass; takes no lock
    bool isLoggable(Level::LogLevel level) const noexcept {
        return level >= storedLevel() &&
               (!isTemporary_.load(std::memory_order_relaxed) || level >= temporaryLevel());
    }

    /// Logs a message; below the logger's level the call costs one comparison.
    ///
    /// Synchronous appenders write it before the call returns. Only a message that an appender or a command
    /// listener logs may be written later: it gets its time, and is checked against the level, at once, and
    /// is written in order when the call of that appender or listener ends. Failures of appenders become the
    /// command "EXCEPTION" and do not reach the caller; an exception from a filter or from a listener for
    /// that command does, and so does `std::bad_alloc`.
    /// \param text written unchanged
    /// \param line source line; 0 or less if there is none
    /// \param file source file; empty if there is none
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

    /// Logs a configuration message: type `CFG`, level `AUDIT`, whatever the logger's level. Otherwise it is
    /// like `audit`.
    ZAV_LOG_API void config(const ConfigurationMessage& message);

    /// Sets the level of this logger and its whole subtree, and restarts their expiration. It ends what
    /// `LogManager::setLevelFor` has set for any of these loggers.
    /// \param notify whether to issue the command "DynamicLogLevelFilterSoft" first, which lowers the dynamic
    ///        filters of the appenders to that level; if one of its listeners throws, the exception reaches
    ///        the caller and the level is not set
    ZAV_LOG_API void setLevel(Level::LogLevel level, bool notify);

    /// Sets how long a level below `WARNING` lasts for this logger and its whole subtree, counted from when
    /// the level was set. The first message after that changes the level back to `WARNING`.
    /// \param duration 0 for no limit
    ZAV_LOG_API void setExpirationTime(const Util::TimeUtils::Time& duration);

    /// \return how long a level below `WARNING` lasts; 0 for no limit
    ZAV_LOG_API Util::TimeUtils::Time getExpirationTime() const;

    /// Adds an appender to this logger and its whole subtree, including loggers that are created later. An
    /// appender that is added twice writes each message twice.
    /// \param appender not null, not owned; must not be destroyed before it is removed
    ZAV_LOG_API void addAppender(Appender* appender);

    /// Removes all entries for an appender from this logger and its subtree. Once it returns, none of these
    /// loggers is calling the appender. If it is called from an appender or a command listener, for example
    /// by an appender that removes itself, it does not wait: other threads may still be inside the appender.
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

    /// \return the level at this moment, for a logger whose level is lowered for a limited time
    ZAV_LOG_API Level::LogLevel temporaryLevel() const noexcept;

    /// Logs a message that has passed the comparison of levels.
    ZAV_LOG_API void logPassed(Level::LogLevel level, std::string_view text, int line,
                               std::string_view file) const;

    Logger& getLogger(const std::string& path);
    const Logger* findLogger(const std::string& path) const;
    std::vector<std::string> getLoggerNames() const;

    std::string name_; ///< never changes after construction
    std::atomic<Level::LogLevel> level_;
    std::atomic<bool> isTemporary_{false}; ///< whether the level is lowered for a limited time
    const std::unique_ptr<Inside> inside_;
};

} // namespace Log
} // namespace ZAV
