#pragma once

#include <chrono>

namespace ZAV {
namespace Platform {

/// Has the user's and the system's requests to end (SIGINT and SIGTERM, Ctrl-C) no longer end the process:
/// whoever calls this asks for them. Called once, before other threads start.
void catchStopSignals();

/// \return true if an end was requested since `catchStopSignals`; false without that
bool isStopRequested();

/// Waits for a while, or until an end is requested or nobody reads standard output any more.
/// \return true if there is no reason to go on
bool waitForStop(std::chrono::milliseconds time);

} // namespace Platform
} // namespace ZAV
