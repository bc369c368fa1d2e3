#pragma once

#include "log/config/AppenderValues.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <limits>

namespace ZAV {
namespace Log {

/// The stretch of time whose lines belong into one file.
///
/// It ends where an hour or a day of local time begins. An hour that comes twice, when clocks are put back,
/// is two; a day is one, however long it is.
struct RollPeriod {
    /// One that is not known: any time is far behind it.
    RollPeriod()
        : earliest(std::numeric_limits<std::uint64_t>::max(), Util::TimeUtils::USEC), end(earliest) {}

    /// \param time in the stretch
    RollPeriod(RollMoment moment, Util::TimeUtils::Time time);

    /// \return whether a line of that time begins a new file
    bool endsBefore(Util::TimeUtils::Time time) const { return time >= end; }

    /// \return whether the time is so much earlier that the clock must have been wrong: threads stamp lines in
    ///         another order than they write them, but not by hours
    bool isFarBehind(Util::TimeUtils::Time time) const { return time < earliest; }

    Util::TimeUtils::Time earliest; ///< some time before the stretch
    Util::TimeUtils::Time end;      ///< the first moment behind it
};

} // namespace Log
} // namespace ZAV
