#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Finds out how far ahead of UTC the clock was that wrote the times of one input.
///
/// In an hour that comes twice, at the end of daylight-saving time, it takes the first one until the time
/// goes back, and the second one from then on.
class ZonedClock {
public:
    /// Takes the time of the next record.
    void observe(std::string_view time);

    /// \return the time that was observed last, as in "2013-05-07T14:03:27.123000+02:00"
    std::string isoText() const;

private:
    void lookUp(std::int64_t localSeconds);

    std::string time_;
    std::int64_t span_ =
        -1; ///< the quarter of an hour that the two offsets are of: no zone changes within one
    std::int64_t first_ = 0; ///< seconds ahead of UTC
    std::int64_t second_ = 0;
    bool isSecond_ = false;
};

} // namespace Tools
} // namespace ZAV
