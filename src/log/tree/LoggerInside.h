#pragma once

#include "log/Logger.h"
#include "log/message/MessageFields.h"
#include "platform/CriticalSection.h"
#include "zav-util/TimeUtils.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

class Appender;
class LibraryCall;

/// The lock that guards all loggers' settings, appender lists and children.
///
/// No thread blocks or runs an appender or a listener while holding it, so settings can be changed, and
/// loggers looked up and created, from anywhere. A change applies to a whole subtree atomically.
/// \return the lock, which is never destroyed, since threads may still log while the process ends
Platform::CriticalSection& treeLock();

/// Gate that every message passes before its dispatch. It is closed while the settings and appenders of all
/// loggers are replaced, so that each message sees either only the old ones or only the new ones.
///
/// A call passes with its logger's lock held. Once the gate is closed and each logger's lock has been free at
/// least once, no message is being dispatched: a call that takes the lock later finds the gate closed,
/// releases the lock and waits here, and a call from inside an appender or a listener puts its message off.
class DispatchGate {
public:
    /// \return whether a call that has just taken its logger's lock must release it; a single atomic load
    static bool isClosed() noexcept { return closed.load(std::memory_order_relaxed); }

    /// Waits until the gate is open. The caller must hold no lock of the library, and not be inside an
    /// appender or a listener.
    static void awaitOpen();

    /// Keeps the gate closed during its lifetime.
    class Closed {
    public:
        Closed();
        ~Closed();
        Closed(const Closed&) = delete;
        Closed& operator=(const Closed&) = delete;
    };

private:
    static Platform::CriticalSection& gateLock();
    static void openInChild();
    static const bool isForked;

    static inline std::atomic<bool> closed{false};
};

/// The appenders of one logger, in the order in which they were added. It does not own them.
///
/// Modifying it needs only the tree's lock, even during a dispatch, so an appender may add and remove others
/// and itself. A dispatch iterates over a copy, which is refreshed when the list has changed, and checks that
/// each entry is still listed.
class AppenderList {
public:
    using Entries = std::list<Appender*>;

    /// Moves the first of `entries` to the end of the list. Does not allocate.
    void takeOne(Entries& entries) ZAV_LOG_REQUIRES(treeLock());

    /// Removes every entry of an appender. A dispatch in another thread may still be calling it.
    void remove(Appender* appender) ZAV_LOG_REQUIRES(treeLock());

    /// Replaces appenders with others, at the position of the first one replaced, or at the end if none is
    /// listed. No message may be in dispatch through this list. Does not allocate.
    /// \param before the appenders to remove, sorted
    /// \param after the appenders to insert, in calling order; empty afterwards
    void exchange(const std::vector<Appender*>& before, Entries& after) ZAV_LOG_REQUIRES(treeLock());

    /// Sets whether messages go only to the recorders of captures, or to all listed appenders.
    void setMuted(bool isMuted) ZAV_LOG_REQUIRES(treeLock());

    /// Takes over the entries of another list; this one must be empty.
    void copyFrom(const AppenderList& other) ZAV_LOG_REQUIRES(treeLock());

    /// The result of one dispatch.
    struct Outcome {
        bool hasAsynchronous = false; ///< whether there are asynchronous appenders, which were skipped
        std::exception_ptr exception; ///< the first one that a filter or a command listener threw, if any
    };

    /// Delivers a message to every synchronous appender; without one, the message object is not created. The
    /// caller must hold the logger's lock.
    ///
    /// If a filter or a command listener throws for one appender, the others still get the message.
    /// \param isOutermost whether this thread has no other dispatch through this list in progress
    Outcome deliverToSynchronous(ReusedMessage& message, bool isOutermost);

    /// \return whether the last dispatch that saw a change of the list found only asynchronous appenders;
    ///         read without a lock
    bool areAsynchronous() const noexcept { return areAsynchronous_.load(std::memory_order_relaxed); }

    /// \return whether an appender is currently listed
    bool contains(const Appender* appender) const ZAV_LOG_REQUIRES(treeLock());

private:
    using Copy = std::vector<Appender*>;

    void renewCopy();
    Copy makeCopy(std::uint64_t& version) const;
    void copyInto(Copy& copy) const ZAV_LOG_REQUIRES(treeLock());
    Outcome give(const Copy& copy, std::uint64_t version, ReusedMessage& message) const;
    bool isStillListed(Appender* appender, std::uint64_t version) const;

    Entries appenders_ ZAV_LOG_GUARDED_BY(treeLock());
    bool isMuted_ ZAV_LOG_GUARDED_BY(treeLock()) = false;
    /// Incremented by every change, under the tree's lock.
    std::atomic<std::uint64_t> version_{0};

    // Used under the logger's lock; the outermost dispatch changes them under the tree's lock as well.
    Copy copy_;
    std::uint64_t copiedVersion_ = 0;

    std::atomic<bool> areAsynchronous_{false};
};

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

    // The same for a message from a place in the program, which may carry values instead of its text. None of
    // these has so many parameters that a view is passed on the stack, from where it would be read as one
    // piece before its two halves have left the store buffer.

    void logFrom(const Place& place, std::string_view text, TextForm form);
    void logFrom(const KnownPlace& place, std::string_view text, TextForm form);

    /// \param pairs the message's own pairs, packed
    void logFrom(const Place& place, std::string_view text, std::string_view pairs);

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
    MessageFields fieldsFrom(const Place& place, std::string_view text, TextForm form);
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

/// A temporary level of a logger and its subtree.
struct SubtreeLevel {
    /// Sets it, starting now; see `LogManager::setLevelFor`.
    static void setFor(Logger& logger, Level::LogLevel level, Util::TimeUtils::Time duration);
};

/// Effect of a `LogCapture` on the loggers of its subtree during its lifetime. It changes no setting: the
/// loggers consult the active captures whenever they compute their effective level and appenders.
class SubtreeCapture {
public:
    /// See the constructor of `LogCapture`.
    /// \param recorder gets the messages; must outlive this object
    SubtreeCapture(Logger& logger, Level::LogLevel level, bool passesOn, Appender& recorder);
    ~SubtreeCapture();
    SubtreeCapture(const SubtreeCapture&) = delete;
    SubtreeCapture& operator=(const SubtreeCapture&) = delete;

    /// \return the lowest level that a capture needs from the logger, or `level` if that is lower
    static Level::LogLevel lowestLevel(const Logger& logger, Level::LogLevel level)
        ZAV_LOG_REQUIRES(treeLock());

    /// \return whether an appender is the recorder of a capture
    static bool isRecorder(const Appender* appender) ZAV_LOG_REQUIRES(treeLock());

private:
    void renewSubtree() ZAV_LOG_REQUIRES(treeLock());
    void awaitDispatches();
    static bool isMuted(const Logger& logger) ZAV_LOG_REQUIRES(treeLock());

    static SubtreeCapture* newest ZAV_LOG_GUARDED_BY(treeLock());

    Logger& logger_;
    Level::LogLevel level_ ZAV_LOG_GUARDED_BY(treeLock());
    const bool passesOn_;
    Appender& recorder_;
    SubtreeCapture* older_ ZAV_LOG_GUARDED_BY(treeLock()) = nullptr;
};

} // namespace Log
} // namespace ZAV
