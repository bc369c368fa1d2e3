#pragma once

#include <string>
#include <vector>

namespace ZAV {
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

} // namespace Log
} // namespace ZAV
