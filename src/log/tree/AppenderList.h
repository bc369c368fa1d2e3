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
/// It changes under the tree's lock alone, also while a message is being given to its appenders: so an
/// appender may add and remove others and itself. The walk goes through a copy, which is renewed when the
/// list has changed, and checks that each entry is still listed.
class AppenderList {
public:
    using Entries = std::list<Appender*>;

    /// Moves the first of some entries to the end of the list, which takes no memory.
    void takeOne(Entries& entries) ZAV_LOG_REQUIRES(treeLock());

    /// Removes every entry of an appender. A walk that goes on in another thread may still be calling it.
    void remove(Appender* appender) ZAV_LOG_REQUIRES(treeLock());

    /// Puts appenders in the place of others: where the first of those was, or at the end. No message may be
    /// on its way through the list. It takes no memory.
    /// \param before what leaves, sorted
    /// \param after what comes, in the order in which it is to be called; empty afterwards
    void exchange(const std::vector<Appender*>& before, Entries& after) ZAV_LOG_REQUIRES(treeLock());

    /// Says whether the messages go to the recorders of captures alone, or to all that are listed.
    void setMuted(bool isMuted) ZAV_LOG_REQUIRES(treeLock());

    /// Takes over the entries of another list; this one must be empty.
    void copyFrom(const AppenderList& other) ZAV_LOG_REQUIRES(treeLock());

    /// The result of one dispatch.
    struct Outcome {
        bool hasAsynchronous = false; ///< whether there are asynchronous appenders, which were left out
        std::exception_ptr exception; ///< the first one that a filter or a command listener threw, if any
    };

    /// Gives a message to every synchronous appender; without one, no object is made. The caller must hold
    /// the logger's lock.
    ///
    /// A filter or a command listener that throws for one appender does not keep the message from the others.
    /// \param isOutermost whether no other walk of this thread goes through this list
    Outcome giveToSynchronous(ReusedMessage& message, bool isOutermost);

    /// \return whether the last walk that saw a change of the list has found asynchronous appenders alone; read
    ///         without a lock
    bool areAsynchronous() const noexcept { return areAsynchronous_.load(std::memory_order_relaxed); }

    /// \return whether an appender is listed now
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
    /// Raised by every change, under the tree's lock.
    std::atomic<std::uint64_t> version_{0};

    // Used under the logger's lock, and changed by the outermost walk under the tree's lock as well.
    Copy copy_;
    std::uint64_t copiedVersion_ = 0;

    std::atomic<bool> areAsynchronous_{false};
};

} // namespace Log
} // namespace ZAV
