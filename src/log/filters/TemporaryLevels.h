#pragma once

#include "log/Level.h"
#include "platform/CriticalSection.h"
#include "platform/Process.h"
#include "zav-util/TimeUtils.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace ZAV {
namespace Log {

class Logger;

/// A level that is let through for a while, by the loggers of a subtree and by every appender.
struct TemporaryLevel {
    using Time = Util::TimeUtils::Time;

    const Logger* logger; ///< the top of the subtree
    Level::LogLevel level;
    std::uint64_t number; ///< higher than that of any earlier one
    Time from;
    Time until;           ///< inclusive
    bool isEnded = false; ///< replaced or ended before its time was over, at `until`

    bool covers(Time time) const { return from <= time && time <= until; }
};

/// The levels that `LogManager::setLevelFor` has set. A message is judged by when it was logged, and may be
/// taken from the queue long after that, so the last few levels whose time is over are kept as well.
///
/// The functions may be called from any thread. Those that change something require the tree lock, which is
/// taken before this object's lock.
class TemporaryLevels : public Platform::NeverDestroyed<TemporaryLevels> {
public:
    using Time = Util::TimeUtils::Time;

    /// Sets a level from now on, replacing the one that the logger has.
    /// \param until later than now
    void set(const Logger* logger, Level::LogLevel level, Time now, Time until);

    /// Ends the levels of the loggers that a function selects.
    template <typename Selection>
    void endWhere(const Selection& isSelected, Time now) {
        const Platform::ScopedLock lock(lock_);
        for (TemporaryLevel& temporary : levels_) {
            if (!temporary.isEnded && isSelected(temporary.logger)) {
                end(temporary, now);
            }
        }
    }

    /// \return the number of the newest one; 0 if there has been none
    std::uint64_t newestNumber() const noexcept { return newest_.load(std::memory_order_relaxed); }

    /// Calls a function with each level whose time is not over at `now` and whose number is above `after`.
    /// One that begins after `now` then begins at `now`: the clock has been set back.
    template <typename Function>
    void forEachLasting(Time now, std::uint64_t after, const Function& function) {
        const Platform::ScopedLock lock(lock_);
        for (TemporaryLevel& temporary : levels_) {
            if (!temporary.isEnded && now <= temporary.until && temporary.number > after) {
                temporary.from = temporary.from < now ? temporary.from : now;
                function(temporary);
            }
        }
    }

    /// \return whether an appender must accept a message of that level even if its own level rejects it;
    ///         costs one comparison while nothing was ever set
    bool letsThrough(Level::LogLevel level, Time time) const {
        return level >= lowest_.load(std::memory_order_relaxed) && time <= latest() && covers(level, time);
    }

    /// \return the lowest level in force at a time; of several such the one that ends last
    std::optional<TemporaryLevel> lowestAt(Time time) const;

private:
    friend NeverDestroyed;
    TemporaryLevels() = default;

    Time latest() const { return Time(latest_.load(std::memory_order_relaxed), Util::TimeUtils::USEC); }
    bool covers(Level::LogLevel level, Time time) const;
    void end(TemporaryLevel& temporary, Time now) ZAV_LOG_REQUIRES(lock_);
    void limitExpired(Time now) ZAV_LOG_REQUIRES(lock_);
    void updateBounds() ZAV_LOG_REQUIRES(lock_);

    mutable Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK};
    std::vector<TemporaryLevel> levels_ ZAV_LOG_GUARDED_BY(lock_); ///< in the order of their numbers

    // Written under the lock, read without it, so that hardly any message takes the lock.
    std::atomic<std::uint64_t> newest_{0};
    std::atomic<std::int32_t> lowest_{std::numeric_limits<std::int32_t>::max()}; ///< of all levels
    std::atomic<std::uint64_t> latest_{0}; ///< the latest `until` of all, in microseconds
};

} // namespace Log
} // namespace ZAV
