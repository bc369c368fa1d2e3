#pragma once

#include "log/CommandListener.h"
#include "log/Level.h"
#include "log/filters/LevelFilter.h"
#include "platform/CriticalSection.h"
#include "zav-util/TimeUtils.h"

#include <atomic>
#include <string>

namespace ZAV {
namespace Log {

/// Passes messages at or above a level that a command can lower for a while. The first message later than the
/// expiration period takes the level back to the configured one.
class FilterLogLevelDynamic : public LevelFilter, public CommandListener {
public:
    /// \param expiration with 0 a lowered level stays
    FilterLogLevelDynamic(Level::LogLevel level, Time expiration);

    /// Lowers the level to the one that the argument names, or starts its period anew; a higher level is
    /// ignored.
    /// \throw LogException if the argument is no level name
    void onCommand(const std::string& argument) override;

    /// Sets the level in force and starts its period anew.
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

} // namespace Log
} // namespace ZAV
