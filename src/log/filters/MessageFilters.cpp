#include "log/filters/MessageFilters.h"

#include "log/LogMessage.h"
#include "log/commands/CommandBus.h"
#include "log/config/AppenderValues.h"
#include "log/filters/TemporaryLevels.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <limits>
#include <optional>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;
using namespace Util::TimeUtils;

namespace {

/// Unregisters a dynamic filter from the command bus before destroying it: its appender may never be used,
/// and a command that another thread issues meanwhile must not reach a destroyed filter.
struct UnregisteringDeleter {
    void operator()(FilterLogLevelDynamic* filter) const {
        CommandBus::instance().unregisterListener(filter);
        delete filter;
    }
};

boost::shared_ptr<MessageFilter> makeLevelFilter(Level::LogLevel level,
                                                 const std::optional<Util::TimeUtils::Time>& expiration) {
    if (!expiration) {
        return boost::make_shared<FilterLogLevel>(level);
    }
    const boost::shared_ptr<FilterLogLevelDynamic> filter(new FilterLogLevelDynamic(level, *expiration),
                                                          UnregisteringDeleter());
    CommandBus::instance().registerListener(CommandName::LOWER_DYNAMIC_LEVELS, filter.get());
    return filter;
}

} // namespace

bool FilterLogger::accept(const LogMessage& message) {
    return std::any_of(loggerNames_.begin(), loggerNames_.end(), [&message](const std::string& prefix) {
        return message.getLoggerName().compare(0, prefix.size(), prefix) == 0;
    });
}

bool FilterLogLevel::passes(const LogMessage& message) {
    return level_ <= message.getLevel();
}

bool FilterMessageType::accept(const LogMessage& message) {
    return message.getType() == messageType_;
}

std::list<boost::shared_ptr<MessageFilter>> makeFilters(const AppenderValues& values) {
    std::list<boost::shared_ptr<MessageFilter>> filters;
    if (values.prefixes) {
        filters.push_back(boost::make_shared<FilterLogger>(*values.prefixes));
    }
    if (values.level) {
        filters.push_back(makeLevelFilter(*values.level, values.expiration));
    }
    if (values.messageType) {
        filters.push_back(boost::make_shared<FilterMessageType>(*values.messageType));
    }
    return filters;
}

bool LevelFilter::accept(const LogMessage& message) {
    return passes(message) || TemporaryLevels::instance().letsThrough(message.getLevel(), message.getTime());
}

LevelFilter::State LevelFilter::stateAt(Time time) const {
    State state = ownStateAt(time);
    const std::optional<TemporaryLevel> temporary = TemporaryLevels::instance().lowestAt(time);
    if (temporary && temporary->level < state.level) {
        state = {temporary->level, temporary->until};
    } else if (temporary && temporary->level == state.level && state.until != Time()) {
        state.until = std::max(state.until, temporary->until);
    }
    return state;
}

FilterLogLevelDynamic::FilterLogLevelDynamic(Level::LogLevel level, Time expiration)
    : level_(level), defaultLevel_(level), levelSetTime_(Time::now().microseconds()),
      expiration_(expiration) {}

bool FilterLogLevelDynamic::passes(const LogMessage& message) {
    if (expiration_ != Time() && isLowered() && isLaterThanPeriod(message.getTime())) {
        const ScopedLock lock(criticalSection_);
        if (isLaterThanPeriod(message.getTime())) { // no command has arrived meanwhile
            setLevel(defaultLevel_);
        }
    }
    return level_.load(std::memory_order_relaxed) <= message.getLevel();
}

/// An elapsed period counts as over even before a message has restored the level.
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
