#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// A point in the local time of the files, or a span of it: a second, a minute, an hour, a day, a month, a
/// year.
class TimeBound {
public:
    /// \param text "2013.05.07 14:03:27", a beginning of it that ends with a whole number, or an age: a number with
    /// "sec", "min", "h" or "d"
    /// \param now microseconds since 1970-01-01 00:00:00 UTC, from which an age counts
    /// \throw UsageError if the text is neither
    TimeBound(const std::string& text, std::int64_t now);

    /// \return true if a time lies before the span
    bool isAfter(std::string_view time) const { return time.substr(0, begin_.size()) < begin_; }

    /// \return true if a time lies behind the span
    bool isBefore(std::string_view time) const { return time.substr(0, begin_.size()) > begin_; }

private:
    std::string begin_; ///< of the text of every time in the span
};

} // namespace Tools
} // namespace ZAV
