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
class ReusedMessage;

/// What applications do not see of a logger.
struct Logger::Inside {
    /// Lets the map of children destroy them, and nobody else.
    struct Deleter {
        void operator()(Logger* logger) const { delete logger; }
    };
    using Children = std::map<std::string, std::unique_ptr<Logger, Deleter>, std::less<>>;

    Inside(Logger& logger, Logger* parent);
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

    /// Makes a message that has reached the logger's level and gives it to the appenders, unless the level
    /// has expired.
    void log(Level::LogLevel level, std::string_view text, int line, std::string_view file, MessageType type);

    /// The same for a message from a place in the program, which may carry values in the place of its text.
    /// \param pairs packed ones of the message
    void logFrom(const Place& place, std::string_view text, TextForm form, std::string_view pairs = {});
    void logFrom(const KnownPlace& place, std::string_view text, TextForm form);

    /// \return whether a message's text is not needed in the call, as far as that is known: all appenders are
    ///         asynchronous
    bool takesValues() const noexcept { return appenders_.areAsynchronous(); }

    /// Takes over the settings and appenders of the parent, for a new logger.
    void inherit() ZAV_LOG_REQUIRES(treeLock());

    /// \return the child of that short name, made if it is missing
    Logger& getChild(std::string_view shortName) ZAV_LOG_REQUIRES(treeLock());
    Logger* findChild(std::string_view shortName) const ZAV_LOG_REQUIRES(treeLock());

    /// Calls a function for the logger and all below it, parents before their children.
    template <typename Function>
    void forSubtree(const Function& function) ZAV_LOG_REQUIRES(treeLock()) {
        for (Inside* inside = this; inside != nullptr; inside = inside->nextBelow(*this)) {
            function(inside->logger_);
        }
    }

    /// Sets the level, also in the place of one that was to last for a while only.
    void setLevel(Level::LogLevel level, Util::TimeUtils::Time now) ZAV_LOG_REQUIRES(treeLock());

    /// Makes the level that of a moment: the lasting one, or a lower one that somebody has asked for until
    /// then or that a capture lets through.
    void renewLevel(Util::TimeUtils::Time now) ZAV_LOG_REQUIRES(treeLock());

    /// \return the level at a moment, for a logger whose level lasts for a while
    Level::LogLevel levelAt(Util::TimeUtils::Time now) noexcept ZAV_LOG_EXCLUDES(treeLock());

    /// \return whether this logger belongs to the subtree of another
    bool isBelow(const Logger& top) const;

    /// \return how many loggers the subtree has
    std::size_t countSubtree() ZAV_LOG_REQUIRES(treeLock());

    /// Goes through the subtree and waits at each logger until a message that another thread is dispatching
    /// there is finished.
    void waitForSubtree() ZAV_LOG_EXCLUDES(treeLock());

    /// The same for a limited time.
    /// \return false if a message was still being dispatched when the time was over
    bool waitForSubtree(std::chrono::steady_clock::time_point end) ZAV_LOG_EXCLUDES(treeLock());

    Logger& logger_;
    Logger* const parent_;
    // Written under the tree's lock, read without it: the numbers of microseconds.
    std::atomic<std::uint64_t> expirationTime_{0}; ///< 0: a level below `WARNING` lasts for ever
    std::atomic<std::uint64_t> levelSetTime_;
    std::atomic<Level::LogLevel> lastingLevel_{Level::LEVEL_WARNING}; ///< what the level goes back to
    /// When the level has to be looked at again; 0 if it was not lowered for a while since it was set.
    std::atomic<std::uint64_t> temporaryUntil_{0};
    /// Temporary levels up to this number were set before the level was.
    std::uint64_t overruledNumber_ ZAV_LOG_GUARDED_BY(treeLock()) = 0;
    AppenderList appenders_;
    /// Held while a message is dispatched: the messages of one logger reach its appenders one by one.
    mutable Platform::CriticalSection criticalSection_;
    /// By the short name: one component of the dotted name. None is removed.
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
    void putOff(const MessageFields& message);
    static bool dispatchPutOff(Logger& logger, bool waitsForLogger);

    /// One step of a walk that needs neither memory nor a deep stack, however deep the tree is.
    /// \return what follows this logger in the subtree of `top`, children first; null at the end
    Inside* nextBelow(const Inside& top) ZAV_LOG_REQUIRES(treeLock());

    /// Where the logger stands among its parent's children. The root has no such place.
    Children::iterator place_ ZAV_LOG_GUARDED_BY(treeLock());
};

/// \return whether an appender is in the list of a logger now
bool isListed(const Logger& logger, const Appender* appender);

} // namespace Log
} // namespace ZAV
