#pragma once

#include "records/ZonedClock.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// A span of time that a user has named: a microsecond, a second, a minute, an hour, a day, a month or a
/// year.
///
/// It is a span of local time, which may occur twice, or, for an age and for a time with its offset from UTC,
/// one between two points in time.
class TimeBound {
public:
    /// \param text "2013.05.07 14:03:27:123000" or a beginning of it that ends with a whole number; the same in ISO
    /// 8601, as "2013-05-07T14:03:27.123000+02:00"; "14:03" or "14:03:27" of today; or an age: a number with
    /// "sec", "min", "m", "h" or "d"
    /// \param now microseconds since 1970-01-01 00:00:00 UTC, from which an age counts
    /// \throw UsageError if the text is none of these
    TimeBound(const std::string& text, std::int64_t now);

    /// \return true if a time lies before the span
    bool isAfter(const ZonedClock& time) const {
        return isPoint_ ? time.microseconds() < begin_ : time.text().substr(0, prefix_.size()) < prefix_;
    }

    /// \return true if a time lies after the span
    bool isBefore(const ZonedClock& time) const {
        return isPoint_ ? time.microseconds() >= end_ : time.text().substr(0, prefix_.size()) > prefix_;
    }

private:
    bool readCivil(const std::string& text);
    bool readZoned(const std::string& text);
    bool readTimeOfToday(const std::string& text, std::int64_t now);
    bool readAge(const std::string& text, std::int64_t now);

    bool isPoint_ = false;
    std::string prefix_;     ///< common to the texts of all times in the span, if it is one of local time
    std::int64_t begin_ = 0; ///< otherwise, in microseconds since 1970-01-01 00:00:00 UTC
    std::int64_t end_ = 0;   ///< the first microsecond after it
};

} // namespace Tools
} // namespace ZAV
