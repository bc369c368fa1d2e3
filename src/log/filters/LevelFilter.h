#pragma once

#include "log/Level.h"
#include "log/MessageFilter.h"
#include "zav-util/TimeUtils.h"

namespace ZAV {
namespace Log {

/// A filter on the level of messages. What it would stop it lets through while somebody has asked for that
/// level by `LogManager::setLevelFor`.
class LevelFilter : public MessageFilter {
public:
    using Time = Util::TimeUtils::Time;

    struct State {
        Level::LogLevel level; ///< the lowest level that passes
        Time until; ///< when it goes back; 0 if nobody has lowered it, the greatest if it never does
    };

    bool accept(const LogMessage& message) final;

    State stateAt(Time time) const;

    /// \return whether a command has lowered the level
    bool isLowered(Time time) const { return ownStateAt(time).until != Time(); }

    /// Takes a level that a command has lowered back to the configured one.
    virtual void restore() {}

private:
    /// \return whether the filter by itself accepts a message
    virtual bool passes(const LogMessage& message) = 0;

    /// \return the state without what somebody has asked for
    virtual State ownStateAt(Time time) const = 0;
};

} // namespace Log
} // namespace ZAV
