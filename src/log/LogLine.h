#pragma once

#include "zav-util/Export.h"

#include <string>

namespace ZAV {
namespace Log {

class LogMessage;

/// Renders a message as standard streams and rotating files show it, without a line end: time, logger name,
/// location if there is one, level, text. A configuration message shows neither location nor level. For
/// example "2013.05.07 14:03:27:123000 net.tcp Socket.cpp:120 INFO connected".
ZAV_LOG_API std::string formatLogLine(const LogMessage& message);

/// Renders a message as the single file shows it: as above, with the program's file name, the process id and
/// the host name after the time.
ZAV_LOG_API std::string formatLogLineWithProcess(const LogMessage& message);

} // namespace Log
} // namespace ZAV
