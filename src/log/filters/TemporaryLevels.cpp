#include "log/filters/TemporaryLevels.h"

#include <algorithm>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// How many levels whose time is over are kept for messages that are still queued.
constexpr std::ptrdiff_t MAX_KEPT = 32;

const TemporaryLevels& madeAtLoad = TemporaryLevels::instance();

} // namespace

/// All memory is allocated before anything changes.
void TemporaryLevels::set(const Logger* logger, Level::LogLevel level, Time now, Time until) {
    const ScopedLock lock(lock_);
    const std::uint64_t number = newest_ + 1;
    levels_.push_back({logger, level, number, now, until});
    newest_ = number;
    for (TemporaryLevel& earlier : levels_) {
        if (!earlier.isEnded && earlier.logger == logger && earlier.number < number) {
            end(earlier, now);
        }
    }
    limitExpired(now);
    updateBounds();
}

void TemporaryLevels::end(TemporaryLevel& temporary, Time now) {
    temporary.until = std::min(temporary.until, now);
    temporary.isEnded = true;
}

void TemporaryLevels::limitExpired(Time now) {
    const auto isOver = [now](const TemporaryLevel& temporary) {
        return temporary.isEnded || temporary.until < now;
    };
    std::ptrdiff_t surplus = std::count_if(levels_.begin(), levels_.end(), isOver) - MAX_KEPT;
    const auto isSurplus = [&](const TemporaryLevel& temporary) {
        return surplus > 0 && isOver(temporary) && surplus-- > 0;
    };
    levels_.erase(std::remove_if(levels_.begin(), levels_.end(), isSurplus), levels_.end());
}

void TemporaryLevels::updateBounds() {
    std::int32_t lowest = std::numeric_limits<std::int32_t>::max();
    Time latest;
    for (const TemporaryLevel& temporary : levels_) {
        lowest = std::min<std::int32_t>(lowest, temporary.level);
        latest = std::max(latest, temporary.until);
    }
    lowest_.store(lowest, std::memory_order_relaxed);
    latest_.store(latest.microseconds(), std::memory_order_relaxed);
}

bool TemporaryLevels::covers(Level::LogLevel level, Time time) const {
    const ScopedLock lock(lock_);
    return std::any_of(levels_.begin(), levels_.end(), [level, time](const TemporaryLevel& temporary) {
        return temporary.level <= level && temporary.covers(time);
    });
}

std::optional<TemporaryLevel> TemporaryLevels::lowestAt(Time time) const {
    std::optional<TemporaryLevel> lowest;
    const ScopedLock lock(lock_);
    for (const TemporaryLevel& temporary : levels_) {
        if (temporary.isEnded || temporary.until < time) {
            continue;
        }
        const bool isLower = !lowest || temporary.level < lowest->level;
        if (isLower || (temporary.level == lowest->level && temporary.until > lowest->until)) {
            lowest = temporary;
        }
    }
    return lowest;
}

} // namespace Log
} // namespace ZAV
