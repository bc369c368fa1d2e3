#pragma once

namespace ZAV {
namespace Platform {

/// \return a descriptor that can be read once an end was requested; -1 before `catchStopSignals`
int stopDescriptor();

} // namespace Platform
} // namespace ZAV
