#pragma once

#include "records/TimeStamp.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Converts the local times of one input to points in time, in the zone of the process.
///
/// In an hour that occurs twice, at the end of daylight-saving time, it assumes the first one until the time
/// goes back, and the second one from then on.
class ZonedClock {
public:
    /// Takes the time stamp of the next record; every record of the input must be passed.
    void observe(std::string_view time) {
        if (std::memcmp(time.data(), time_.data(), MINUTE_LENGTH) != 0) {
            goToMinute(time);
        }
        isSecond_ = comesTwice() && (isSecond_ || time < text());
        std::memcpy(time_.data(), time.data(), TIME_STAMP_LENGTH);
    }

    /// Takes the time stamp of a record whose point in time is known.
    /// \param microseconds since 1970-01-01 00:00:00 UTC
    void observe(std::string_view time, std::int64_t microseconds);

    /// \return the time that was observed last, as it is in the record; zeros before the first one
    std::string_view text() const { return std::string_view(time_.data(), time_.size()); }

    /// \return the same as in "2013-05-07T14:03:27.123000+02:00"
    std::string isoText() const;

    /// \return the same in microseconds since 1970-01-01 00:00:00 UTC
    std::int64_t microseconds() const;

    /// \return true if that local time occurs twice
    bool comesTwice() const { return first_ != second_; }

private:
    static constexpr std::size_t MINUTE_LENGTH = 16; ///< of a time to the minute

    void goToMinute(std::string_view time);
    void lookUp(std::int64_t localSeconds);
    std::int64_t offset() const { return isSecond_ ? second_ : first_; }

    std::int64_t minute_ = 0; ///< the start of its minute, in seconds as `civilSeconds` counts them
    std::array<char, TIME_STAMP_LENGTH> time_ = {};
    std::int64_t span_ = INT64_MIN; ///< quarter of an hour of the two offsets: no zone changes within one
    std::int64_t first_ = 0;        ///< seconds ahead of UTC
    std::int64_t second_ = 0;
    bool isSecond_ = false;
};

} // namespace Tools
} // namespace ZAV
