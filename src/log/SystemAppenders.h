#pragma once

/// \file
/// Appenders for syslog, the journal of systemd and the Windows event log.

#include "zav-util/Export.h"

namespace ZAV {
namespace Log {

/// Registers the appenders for the logs of the operating system, so that the configuration can name them.
/// They are in the library `zav-log-system`, so that other programs need not link their dependencies:
///
///     #include "log/LogSession.h"
///
///     int main() {
///         ZAV::Log::registerSystemAppenders();
///         const ZAV::Log::LogSession session("app.properties"); // with "appender.system = SyslogAppender"
///         // ...
///     }
///
/// | class | where | its own keys |
/// |---|---|---|
/// | `SyslogAppender` | Linux: `syslog` of the C library | `ident`, `facility` |
/// | `JournaldAppender` | Linux: the journal of systemd | |
/// | `EventLogAppender` | Windows: the event log | `source` |
///
/// A message of the level AUDIT becomes a notice; ERROR, WARNING and INFO keep their names; DEBUG and TRACE
/// become debug messages. The event log has only three types: error, warning, and information for everything
/// else.
///
/// A message that cannot be delivered is reported like that of any other appender. Only `syslog` does not
/// report failures: without a daemon its messages are lost.
///
/// Call it once, before `LogManager::init`, from any thread.
/// \throw LogException if one of the classes is registered already
ZAV_LOG_SYSTEM_API void registerSystemAppenders();

} // namespace Log
} // namespace ZAV
