#pragma once

#include "platform/LocalTime.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ZAV {
namespace Platform {

/// The system's own conversion to local time. It takes a lock of the system's, which a fork does not heed.
/// \return all zero if the system cannot convert that point in time
CalendarTime askSystem(std::int64_t seconds);

/// How far the process's time zone is ahead of UTC, for the years around the moment at which the system was
/// asked. It takes no memory.
class OffsetTable {
public:
    /// Asks the system, about a thousand times, which takes a fraction of a millisecond.
    /// \param now seconds since 1970-01-01 00:00:00 UTC
    void fill(std::int64_t now);
    bool isFilled() const { return count_ != 0; }

    /// \return whether the system was asked less than a day before or after that time. What is known of later
    ///         ones may have changed: zones get new rules.
    bool isFreshAt(std::int64_t seconds) const;

    /// \return the seconds ahead of UTC at that time or, if it is beyond the years that are known, at the next
    ///         one that is not
    std::int64_t offsetAt(std::int64_t seconds) const;

private:
    struct Period {
        std::int64_t end; ///< the first second behind it
        std::int64_t offset;
    };

    std::int64_t filledAt_ = 0;
    std::size_t count_ = 0;
    std::array<Period, 64> periods_{};
};

} // namespace Platform
} // namespace ZAV
