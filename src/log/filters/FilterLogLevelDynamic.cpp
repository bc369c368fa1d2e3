#include "log/filters/FilterLogLevelDynamic.h"

#include "log/LogMessage.h"

#include <limits>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;
using namespace Util::TimeUtils;

FilterLogLevelDynamic::FilterLogLevelDynamic(Level::LogLevel level, Time expiration)
    : level_(level), defaultLevel_(level), levelSetTime_(Time::now().microseconds()),
      expiration_(expiration) {}

bool FilterLogLevelDynamic::passes(const LogMessage& message) {
    if (expiration_ != Time() && isLowered() && isLaterThanPeriod(message.getTime())) {
        const ScopedLock lock(criticalSection_);
        if (isLaterThanPeriod(message.getTime())) { // and no command has come meanwhile
            setLevel(defaultLevel_);
        }
    }
    return level_.load(std::memory_order_relaxed) <= message.getLevel();
}

/// A period that is over shows as over, also before a message has ended it.
LevelFilter::State FilterLogLevelDynamic::ownStateAt(Time time) const {
    const ScopedLock lock(criticalSection_);
    const bool returns = expiration_ != Time();
    if (!isLowered() || (returns && isLaterThanPeriod(time))) {
        return {defaultLevel_, Time()};
    }
    const Time end = Time(levelSetTime_.load(std::memory_order_relaxed), USEC) + expiration_;
    return {level_.load(std::memory_order_relaxed),
            returns ? end : Time(std::numeric_limits<std::uint64_t>::max(), USEC)};
}

bool FilterLogLevelDynamic::isLowered() const {
    return level_.load(std::memory_order_relaxed) < defaultLevel_;
}

bool FilterLogLevelDynamic::isLaterThanPeriod(Time time) const {
    return time > Time(levelSetTime_.load(std::memory_order_relaxed), USEC) + expiration_;
}

void FilterLogLevelDynamic::onCommand(const std::string& argument) {
    const Level::LogLevel level = Level::fromString(argument);
    const ScopedLock lock(criticalSection_);
    if (level <= level_.load(std::memory_order_relaxed)) {
        setLevel(level);
    }
}

void FilterLogLevelDynamic::setLevel(Level::LogLevel level) {
    const ScopedLock lock(criticalSection_);
    level_.store(level, std::memory_order_relaxed);
    if (expiration_ != Time()) {
        levelSetTime_.store(Time::now().microseconds(), std::memory_order_relaxed);
    }
}

} // namespace Log
} // namespace ZAV
