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
/// applies to the whole subtree, so the root comes first and every logger before its descendants.
/// \param keys all keys of a configuration, ascending
std::vector<LoggerKey> orderLoggerKeys(const std::vector<std::string>& keys);

/// The value of such a key; empty if its attribute is unknown.
struct LoggerValue {
    std::optional<Level::LogLevel> level;
    std::optional<Util::TimeUtils::Time> expiration;
};

/// \throw LogException or UtilException for an invalid value
LoggerValue readLoggerValue(const LoggerKey& key, const Util::Properties& properties);

/// Calls a function with each key of a logger, in that order. A `std::exception` that it throws for a key is
/// reported on the standard error stream, except for `std::bad_alloc`, which reaches the caller: the value
/// may be valid.
void forEachLoggerKey(const Util::Properties& properties, const std::function<void(const LoggerKey&)>& use);

/// Rejects a name that would make the tree too deep: each component is a logger, which stores its full name,
/// so the memory for a long name of many components grows with the square of its length.
/// \param path as `Logger::getLogger` splits it: at each dot, empty components included
/// \throw LogException for more than 1,000 components
void checkName(std::string_view path);

} // namespace Log
} // namespace ZAV
