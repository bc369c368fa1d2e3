#pragma once

#include "log/Level.h"
#include "log/Logger.h"
#include "log/config/LoggerKeys.h"
#include "log/tree/TreeLock.h"
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

/// What a configuration makes of all loggers at once, whatever they were before: afterwards each has the
/// level and the expiration that a fresh process would give it. A bad value leaves its setting as it was.
class TreeChange {
public:
    /// Reads the loggers' keys, and changes nothing. Bad values are reported on the standard error stream.
    TreeChange(Logger& root, const Util::Properties& properties);

    /// Makes the loggers that are missing.
    void makeLoggers();

    /// Waits at each logger until a message that another thread is dispatching there is finished.
    void awaitMessages() const;

    /// The same for a limited time.
    /// \return false if one was still being dispatched when the time was over
    bool awaitMessages(std::chrono::steady_clock::time_point end) const;

    /// Gives every logger its settings, and appenders in the place of others, in one step. What was set for a
    /// while is over. To be called once, after `makeLoggers` and while no message is dispatched
    /// (`DispatchGate`).
    /// \throw std::bad_alloc; nothing has changed then
    void apply(const std::vector<Appender*>& before, const std::vector<Appender*>& after);

    /// Waits until the clock shows a later time than the one at which levels for a while were ended, if any
    /// were. Those levels hold for messages up to that time, which may be queued.
    void awaitLaterTime() const;

private:
    /// A key, as it was read.
    struct Setting {
        std::string path; ///< below the root; not used for the root itself
        bool isRoot;
        std::string attribute;
        LoggerValue value; ///< nothing if it was a bad one
    };

    /// What a key of one logger says.
    template <typename Value>
    struct Own {
        bool isGiven = false;
        bool staysAsItIs = false; ///< the value is a bad one
        Value value{};
        std::size_t position = 0; ///< of the key: a later one of an ancestor overrules it
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
    Util::TimeUtils::Time endOfTemporary_; ///< 0 if there was none to end
};

/// A level of a logger and all below it that lasts for a while.
struct SubtreeLevel {
    /// Sets it from now on; see `LogManager::setLevelFor`.
    static void setFor(Logger& logger, Level::LogLevel level, Util::TimeUtils::Time duration);
};

} // namespace Log
} // namespace ZAV
