#pragma once

#include "log/Level.h"

namespace ZAV {
namespace Log {

/// \return the severity of a level, as defined in <syslog.h>; the journal calls it priority
int severityOf(Level::LogLevel level);

} // namespace Log
} // namespace ZAV
