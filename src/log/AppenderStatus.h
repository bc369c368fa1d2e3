#pragma once

/// \file
/// Lists the appenders of the configuration, as they are at this moment:
///
///     #include "log/LogManager.h"
///     #include <iostream>
///
///     void listAppenders() {
///         for (const ZAV::Log::AppenderStatus& appender : ZAV::Log::LogManager::appenders()) {
///             std::cout << appender.name << " is a " << appender.className << '\n';
///         }
///     }

#include "log/Level.h"
#include "zav-util/TimeUtils.h"

#include <string>

namespace ZAV {
namespace Log {

/// The state of an appender of the configuration at one moment, as `LogManager::appenders` returns it.
struct AppenderStatus {
    std::string name;
    std::string className;                      ///< as in the configuration, "FileAppender" for example
    bool synchronous = true;                    ///< whether the logging thread writes the messages
    bool hasLevel = false;                      ///< whether it has a level at all
    Level::LogLevel level = Level::LEVEL_TRACE; ///< the lowest that it writes now; unspecified if it has none

    /// When the level returns to the configured one, if `LogManager::setLevelFor` or a command has lowered
    /// it; 0 if it is not lowered. The greatest number of microseconds means never.
    Util::TimeUtils::Time until;
};

} // namespace Log
} // namespace ZAV
