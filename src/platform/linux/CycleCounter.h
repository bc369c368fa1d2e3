#pragma once

#include <cstdint>

namespace ZAV {
namespace Platform {

/// The processor's counter of cycles, which is read several times as fast as the system's clock.
namespace CycleCounter {

/// \return whether the counter runs at one speed on all processors at all times, as the system itself had found
///         when the library was loaded; false also where there is none
bool isSteady();

/// \return the counter's present value; 0 where there is none
std::uint64_t read();

/// \return how far it counts in a microsecond, rather too little than too much; 0 for the first milliseconds
///         after the library was loaded
std::uint64_t ticksPerMicrosecond();

} // namespace CycleCounter
} // namespace Platform
} // namespace ZAV
