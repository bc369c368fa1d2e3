#pragma once

#include "log/tree/TreeLock.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <list>
#include <vector>

namespace ZAV {
namespace Log {

class Appender;
class ReusedMessage;

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

} // namespace Log
} // namespace ZAV
