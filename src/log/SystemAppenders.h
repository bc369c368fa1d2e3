#pragma once

#include "zav-util/Export.h"

namespace ZAV {
namespace Log {

/// Makes the classes of appenders to the system's own logs known to the configuration. They are in the
/// library `zav-log-system`, so that nobody else links what they need:
///
///     int main() {
///         ZAV::Log::registerSystemAppenders();
///         const ZAV::Log::LogSession session("app.properties");
///         ...
///     }
///
/// | class | where | keys of its own |
/// |---|---|---|
/// | `SyslogAppender` | Linux: `syslog` of the C library | `ident`, `facility` |
/// | `JournaldAppender` | Linux: the journal of systemd | |
/// | `EventLogAppender` | Windows: the event log | `source` |
///
/// A message of the level AUDIT is a notice there, ERROR, WARNING and INFO are themselves, DEBUG and TRACE
/// are both debug. The event log has three types: error, warning, and information for all else.
///
/// A message that cannot be handed over is reported as that of any other appender. `syslog` alone says
/// nothing of a failure: without a daemon its messages are lost.
///
/// To be called once, before `LogManager::init`, from any thread.
/// \throw LogException if one of the classes has been registered already
ZAV_LOG_SYSTEM_API void registerSystemAppenders();

} // namespace Log
} // namespace ZAV
