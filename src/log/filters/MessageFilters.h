#pragma once

#include "log/CommandListener.h"
#include "log/Level.h"
#include "log/MessageFilter.h"
#include "log/MessageType.h"
#include "platform/CriticalSection.h"
#include "zav-util/TimeUtils.h"

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <list>
#include <string>
#include <utility>
#include <vector>

namespace ZAV {
namespace Log {

struct AppenderValues;

/// Filters messages by level. It also passes those that `LogManager::setLevelFor` lets through.
class LevelFilter : public MessageFilter {
public:
    using Time = Util::TimeUtils::Time;

    struct State {
        Level::LogLevel level; ///< the lowest level that passes
        Time until;            ///< when the level is restored; 0 if it is not lowered, the maximum if never
    };

    bool accept(const LogMessage& message) final;

    State stateAt(Time time) const;

    /// \return whether a command has lowered the level
    bool isLowered(Time time) const { return ownStateAt(time).until != Time(); }

    /// Restores the configured level if a command has lowered it.
    virtual void restore() {}

private:
    /// \return whether the filter's own level passes a message
    virtual bool passes(const LogMessage& message) = 0;

    /// \return the state regardless of `LogManager::setLevelFor`
    virtual State ownStateAt(Time time) const = 0;
};

/// Passes messages of the loggers whose names begin with one of a list of prefixes. The prefixes are plain
/// text: "net" passes "net.tcp" and also "network". Without prefixes every message is rejected.
class FilterLogger : public MessageFilter {
public:
    explicit FilterLogger(std::vector<std::string> loggerNames) : loggerNames_(std::move(loggerNames)) {}

    bool accept(const LogMessage& message) override;

private:
    const std::vector<std::string> loggerNames_;
};

/// Passes messages at or above a level.
class FilterLogLevel : public LevelFilter {
public:
    explicit FilterLogLevel(Level::LogLevel level) : level_(level) {}

private:
    bool passes(const LogMessage& message) override;
    State ownStateAt(Time) const override { return {level_, Time()}; }

    const Level::LogLevel level_;
};

/// Passes messages of one type.
class FilterMessageType : public MessageFilter {
public:
    explicit FilterMessageType(MessageType messageType) : messageType_(messageType) {}

    bool accept(const LogMessage& message) override;

private:
    const MessageType messageType_;
};

/// Passes messages at or above a level that a command can lower for a while. The first message after the
/// expiration period restores the configured level.
class FilterLogLevelDynamic : public LevelFilter, public CommandListener {
public:
    /// \param expiration 0: a lowered level stays
    FilterLogLevelDynamic(Level::LogLevel level, Time expiration);

    /// Lowers the level to the one that the argument names, or restarts its period; a higher level is
    /// ignored.
    /// \throw LogException if the argument is no level name
    void onCommand(const std::string& argument) override;

    /// Sets the current level and restarts its period.
    void setLevel(Level::LogLevel level);

    void restore() override { setLevel(defaultLevel_); }

private:
    bool passes(const LogMessage& message) override;
    State ownStateAt(Time time) const override;
    bool isLowered() const;
    bool isLaterThanPeriod(Time time) const;

    // Changed under the lock, read without it.
    std::atomic<Level::LogLevel> level_;
    const Level::LogLevel defaultLevel_;
    std::atomic<std::uint64_t> levelSetTime_; ///< microseconds since 1970
    const Time expiration_;                   ///< 0: a lowered level stays
    mutable Platform::CriticalSection criticalSection_{
        Platform::AWAITED_BY_FORK}; ///< always the innermost lock
};

/// \return an appender's filters, in the order in which they are applied. One whose level a command may lower
///         listens to that command until it is destroyed.
std::list<boost::shared_ptr<MessageFilter>> makeFilters(const AppenderValues& values);

} // namespace Log
} // namespace ZAV
