#pragma once

#include "log/Level.h"
#include "zav-util/TimeUtils.h"

#include <string>

namespace ZAV {
namespace Log {

/// An appender of the configuration at one moment, as `LogManager::appenders` gives it.
struct AppenderStatus {
    std::string name;
    std::string className;                      ///< as the configuration calls it, "FileAppender" for example
    bool synchronous = true;                    ///< whether it writes in the thread that logs
    bool hasLevel = false;                      ///< whether it has a level at all
    Level::LogLevel level = Level::LEVEL_TRACE; ///< the lowest that it takes now; of no meaning without one

    /// When the level goes back, if `LogManager::setLevelFor` or a command has lowered it; 0 if none has. The
    /// greatest number of microseconds means never.
    Util::TimeUtils::Time until;
};

} // namespace Log
} // namespace ZAV
