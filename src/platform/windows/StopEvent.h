#pragma once

namespace ZAV {
namespace Platform {

/// \return true from `catchStopSignals` on
bool catchesStopSignals();

} // namespace Platform
} // namespace ZAV
