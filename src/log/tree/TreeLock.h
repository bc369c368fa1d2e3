#pragma once

#include "platform/CriticalSection.h"

namespace ZAV {
namespace Log {

/// The one lock over the loggers' settings, their lists of appenders and their children.
///
/// Nothing is waited for while it is held, and no appender or listener runs: so settings can be changed, and
/// loggers looked up and made, from anywhere. A change spreads to a whole subtree in one step.
/// \return a lock that is never destroyed, since threads may still log while the process ends
Platform::CriticalSection& treeLock();

} // namespace Log
} // namespace ZAV
