#pragma once

#include "log/Level.h"
#include "zav-util/TimeUtils.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// A configuration key "logger.<name>.<attribute>".
struct LoggerKey {
    std::string key;
    std::string loggerName;
    std::string attribute;
};

/// Selects the keys that name an attribute of a logger, in the order in which they must be applied: a setting
/// spreads to the subtree, so the root comes first and every logger before its descendants.
/// \param keys all keys of a configuration, ascending
std::vector<LoggerKey> orderLoggerKeys(const std::vector<std::string>& keys);

/// What the value of such a key says; nothing at all if its attribute is unknown.
struct LoggerValue {
    std::optional<Level::LogLevel> level;
    std::optional<Util::TimeUtils::Time> expiration;
};

/// \throw LogException or UtilException for a bad value
LoggerValue readLoggerValue(const LoggerKey& key, const Util::Properties& properties);

/// Calls a function with each key of a logger, in that order. A `std::exception` that it throws for a key is
/// reported on the standard error stream, but for `std::bad_alloc`: the value may be a good one then.
void forEachLoggerKey(const Util::Properties& properties, const std::function<void(const LoggerKey&)>& use);

/// Refuses a name that makes the tree absurdly deep: each component is a logger, which keeps its full name,
/// so a long name of many components takes memory by the square of its length.
/// \param path as `Logger::getLogger` splits it: at each dot, empty components included
/// \throw LogException for more than 1,000 components
void requireAcceptableName(std::string_view path);

} // namespace Log
} // namespace ZAV
