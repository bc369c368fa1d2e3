#pragma once

#include "log/Level.h"

namespace ZAV {
namespace Log {

/// \return the severity of a level: one of <syslog.h>, which the journal calls priority
int severityOf(Level::LogLevel level);

} // namespace Log
} // namespace ZAV
