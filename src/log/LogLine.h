#pragma once

/// \file
/// The lines of the library's own appenders, for an appender of the application:
///
///     #include "log/LogMessage.h"
///     #include <cstdio>
///
///     void show(const ZAV::Log::LogMessage& message) {
///         std::puts(ZAV::Log::formatLogLine(message).c_str());
///     }

#include "zav-util/Export.h"

#include <string>

namespace ZAV {
namespace Log {

class LogMessage;

/// \return the line for a message as it appears on standard streams and in rotating files, without a line
///         end: time, logger name, location if there is one, level, text. A configuration message shows
///         neither location nor level. For example "2013.05.07 14:03:27:123000 net.tcp Socket.cpp:120 INFO
///         connected".
ZAV_LOG_API std::string formatLogLine(const LogMessage& message);

/// \return the line for a message as it appears in a single file: as above, with the program's file name, the
///         process id and the host name after the time
ZAV_LOG_API std::string formatLogLineWithProcess(const LogMessage& message);

} // namespace Log
} // namespace ZAV
