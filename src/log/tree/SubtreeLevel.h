#pragma once

#include "log/Level.h"
#include "zav-util/TimeUtils.h"

namespace ZAV {
namespace Log {

class Logger;

/// A level of a logger and all below it that lasts for a while.
struct SubtreeLevel {
    /// Sets it from now on; see `LogManager::setLevelFor`.
    static void setFor(Logger& logger, Level::LogLevel level, Util::TimeUtils::Time duration);
};

} // namespace Log
} // namespace ZAV
