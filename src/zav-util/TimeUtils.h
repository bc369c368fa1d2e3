#pragma once

/// \file
/// Points in time and durations:
///
///     #include "log/LogManager.h"
///
///     bool flushForFiveSeconds() {
///         return ZAV::Log::LogManager::flush(ZAV::Util::TimeUtils::Time(5, ZAV::Util::TimeUtils::SEC));
///     }

#include "zav-util/Export.h"

#include <cstdint>
#include <string>

namespace ZAV {
namespace Util {
namespace TimeUtils {

/// A unit of time.
enum TimeUnit : std::int32_t {
    USEC = 0, ///< microseconds
    MSEC = 1, ///< milliseconds
    SEC = 2,  ///< seconds
    MIN = 3,  ///< minutes
    HOUR = 4, ///< hours
    DAY = 5   ///< days of 24 hours
};

/// A point in time, in microseconds since 1970-01-01 00:00:00 UTC, or a duration in microseconds.
///
/// 0, the default, means that no time is set. All arithmetic is unsigned with 64 bits, and wraps around.
class Time {
public:
    constexpr Time() noexcept = default;

    /// \param count how many units; a negative number is taken as its two's complement
    /// \param unit a number that is not in the enumeration is taken as `USEC`
    constexpr Time(std::uint64_t count, TimeUnit unit) noexcept
        : microseconds_(count * microsecondsPer(unit)) {}

    /// \return the current time, in whole milliseconds
    ZAV_LOG_API static Time now();

    constexpr std::uint64_t microseconds() const noexcept { return microseconds_; }

    /// \return the local date and time to the second, for example "2013.05.07 14:03:27"
    ZAV_LOG_API std::string toSecondsString() const;

    /// \return the local date and time to the microsecond, for example "2013.05.07 14:03:27:123000"
    ZAV_LOG_API std::string toString() const;

    friend constexpr bool operator==(Time a, Time b) noexcept { return a.microseconds_ == b.microseconds_; }
    friend constexpr bool operator!=(Time a, Time b) noexcept { return a.microseconds_ != b.microseconds_; }
    friend constexpr bool operator<(Time a, Time b) noexcept { return a.microseconds_ < b.microseconds_; }
    friend constexpr bool operator>(Time a, Time b) noexcept { return a.microseconds_ > b.microseconds_; }
    friend constexpr bool operator<=(Time a, Time b) noexcept { return a.microseconds_ <= b.microseconds_; }
    friend constexpr bool operator>=(Time a, Time b) noexcept { return a.microseconds_ >= b.microseconds_; }
    friend constexpr Time operator+(Time a, Time b) noexcept {
        return Time(a.microseconds_ + b.microseconds_, USEC);
    }

private:
    static constexpr std::uint64_t microsecondsPer(TimeUnit unit) noexcept {
        switch (unit) {
        case MSEC:
            return 1000;
        case SEC:
            return 1000000;
        case MIN:
            return 60000000;
        case HOUR:
            return 3600000000;
        case DAY:
            return 86400000000;
        case USEC:
            break;
        }
        return 1;
    }

    std::uint64_t microseconds_ = 0;
};

} // namespace TimeUtils
} // namespace Util
} // namespace ZAV
