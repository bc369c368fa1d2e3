#pragma once

#include "records/TimeStamp.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Finds out at which points in time the clock on the wall showed what one input holds, in the zone of the
/// process.
///
/// In an hour that comes twice, at the end of daylight-saving time, it takes the first one until the time
/// goes back, and the second one from then on.
class ZonedClock {
public:
    /// Takes the time of the next record; every record of the input must come here.
    void observe(std::string_view time) {
        if (time.substr(0, MINUTE_LENGTH) != std::string_view(time_).substr(0, MINUTE_LENGTH)) {
            goToMinute(time);
        }
        isSecond_ = comesTwice() && (isSecond_ || time < time_);
        time_.assign(time);
    }

    /// \return the time that was observed last, as it stands in the record; of 26 blanks before the first one
    std::string_view text() const { return time_; }

    /// \return the same as in "2013-05-07T14:03:27.123000+02:00"
    std::string isoText() const;

    /// \return the same in microseconds since 1970-01-01 00:00:00 UTC
    std::int64_t microseconds() const;

    /// \return true if the clock shows that time twice
    bool comesTwice() const { return first_ != second_; }

private:
    static constexpr std::size_t MINUTE_LENGTH = 16; ///< of a time to the minute

    void goToMinute(std::string_view time);
    void lookUp(std::int64_t localSeconds);
    std::int64_t offset() const { return isSecond_ ? second_ : first_; }

    std::int64_t minute_ = 0; ///< the begin of its minute, in seconds as `civilSeconds` counts them
    std::string time_ = std::string(TIME_STAMP_LENGTH, ' ');
    std::int64_t span_ =
        INT64_MIN; ///< the quarter of an hour that the two offsets are of: no zone changes within one
    std::int64_t first_ = 0; ///< seconds ahead of UTC
    std::int64_t second_ = 0;
    bool isSecond_ = false;
};

} // namespace Tools
} // namespace ZAV
