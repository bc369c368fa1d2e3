#pragma once

/// \file
/// The levels of messages and loggers, and their names:
///
///     #include "log/Logger.h"
///
///     void setLevel(ZAV::Log::Logger& logger, const std::string& name) {
///         using namespace ZAV::Log;
///         logger.setLevel(name.empty() ? Level::WARNING : Level::fromString(name), true);
///     }

#include "zav-util/Export.h"

#include <cstdint>
#include <string>

/// The levels as numbers for the preprocessor, as in `-DZAV_LOG_ACTIVE_LEVEL=ZAV_LOG_LEVEL_INFO`.
#define ZAV_LOG_LEVEL_AUDIT 60
#define ZAV_LOG_LEVEL_ERROR 50
#define ZAV_LOG_LEVEL_WARNING 40
#define ZAV_LOG_LEVEL_INFO 30
#define ZAV_LOG_LEVEL_DEBUG 20
#define ZAV_LOG_LEVEL_TRACE 10

// Other headers define some of these names as macros, and so does a build with -DDEBUG. Here they are
// enumerators.
#pragma push_macro("AUDIT")
#pragma push_macro("ERROR")
#pragma push_macro("WARNING")
#pragma push_macro("INFO")
#pragma push_macro("DEBUG")
#pragma push_macro("TRACE")
#undef AUDIT
#undef ERROR
#undef WARNING
#undef INFO
#undef DEBUG
#undef TRACE

namespace ZAV {
namespace Log {
namespace Level {

/// The severity of a message; a higher number is more severe. A logger with a level lets messages of that
/// level and of all higher ones through.
enum LogLevel : std::int32_t { AUDIT = 60, ERROR = 50, WARNING = 40, INFO = 30, DEBUG = 20, TRACE = 10 };

/// The same levels, for code where one of the names above is a macro.
constexpr LogLevel LEVEL_AUDIT = AUDIT;
constexpr LogLevel LEVEL_ERROR = ERROR;
constexpr LogLevel LEVEL_WARNING = WARNING;
constexpr LogLevel LEVEL_INFO = INFO;
constexpr LogLevel LEVEL_DEBUG = DEBUG;
constexpr LogLevel LEVEL_TRACE = TRACE;

/// \return the level's name in upper case; "ERROR" for any number that is not one of the six levels
ZAV_LOG_API const std::string& toString(LogLevel level);

/// \param name the exact name of a level, in upper case
/// \throw LogException if no level has that name
ZAV_LOG_API LogLevel fromString(const std::string& name);

} // namespace Level
} // namespace Log
} // namespace ZAV

#pragma pop_macro("TRACE")
#pragma pop_macro("DEBUG")
#pragma pop_macro("INFO")
#pragma pop_macro("WARNING")
#pragma pop_macro("ERROR")
#pragma pop_macro("AUDIT")
