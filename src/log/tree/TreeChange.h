#pragma once

#include "log/Level.h"
#include "log/Logger.h"
#include "log/config/LoggerKeys.h"
#include "log/tree/LoggerInside.h"
#include "zav-util/TimeUtils.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

class Appender;

/// Applies a configuration to all loggers at once, regardless of their previous settings: afterwards each has
/// the level and the expiration that a fresh process would give it. An invalid value leaves its setting
/// unchanged.
class TreeChange {
public:
    /// Reads the loggers' keys without changing anything. Invalid values are reported on the standard error
    /// stream.
    TreeChange(Logger& root, const Util::Properties& properties);

    /// Creates the missing loggers.
    void makeLoggers();

    /// Waits, for one logger after another, until a dispatch in progress in another thread has finished.
    void awaitMessages() const;

    /// The same with a deadline.
    /// \return false if a dispatch was still in progress at the deadline
    bool awaitMessages(std::chrono::steady_clock::time_point end) const;

    /// Sets every logger's settings and replaces appenders with others, atomically. Temporary levels end.
    /// Call it once, after `makeLoggers` and while no message is dispatched (`DispatchGate`).
    /// \throw std::bad_alloc; nothing is changed then
    void apply(const std::vector<Appender*>& before, const std::vector<Appender*>& after);

    /// Waits until the clock is past the time at which temporary levels were ended, if any were. Those levels
    /// apply to messages up to that time, which may still be queued.
    void awaitLaterTime() const;

private:
    /// A key as read from the properties.
    struct Setting {
        std::string path; ///< below the root; not used for the root itself
        bool isRoot;
        std::string attribute;
        LoggerValue value; ///< empty if it was invalid
    };

    /// One setting of a logger, from its own key.
    template <typename Value>
    struct Own {
        bool isGiven = false;
        bool staysAsItIs = false; ///< the value is invalid
        Value value{};
        std::size_t position = 0; ///< of the key; a later key of an ancestor overrides it
    };
    struct OwnSettings {
        Own<Level::LogLevel> level;
        Own<Util::TimeUtils::Time> expiration;
    };

    template <typename Value>
    static Own<Value> ownSetting(const std::optional<Value>& value, bool hasLogger, std::size_t position);
    void forgetOverruled();
    template <typename Value>
    bool isOverruled(const Logger& logger, Own<Value> OwnSettings::*own) const;
    void configure(Logger& logger, Util::TimeUtils::Time now) const ZAV_LOG_REQUIRES(treeLock());

    Logger& root_;
    std::vector<Setting> settings_;
    std::map<const Logger*, OwnSettings> own_;
    Util::TimeUtils::Time endOfTemporary_; ///< when temporary levels were ended; 0 if there were none
};

} // namespace Log
} // namespace ZAV
