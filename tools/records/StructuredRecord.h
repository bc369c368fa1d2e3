#pragma once

#include "log/Level.h"
#include "records/Fields.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// A line of one of the machine-readable layouts, `json` or `fields`. It is shown as the layout `plain` would
/// show it; what is not known is left out.
class StructuredRecord {
public:
    /// Sets the time, which is shown in the zone of the process.
    /// \param microseconds since 1970-01-01 00:00:00 UTC
    void setTime(std::int64_t microseconds);

    /// \param time as `plain` shows it
    void setTime(std::string_view time) { time_ = time; }

    /// \return false if the word is no level
    bool setLevel(std::string_view word);

    /// Builds what `shown` returns, once the members have been set.
    void show();

    /// Adds lines that belong to the record but could not be parsed themselves.
    void addLines(std::string_view lines);

    /// \return the record as text, with its pairs after the message
    std::string_view shown() const { return shown_; }

    /// \return the beginning of the shown time
    std::string_view time() const { return time_; }

    /// \return microseconds since 1970-01-01 00:00:00 UTC, if the line has more than a local time
    const std::optional<std::int64_t>& instant() const { return instant_; }

    /// \return views into this object
    Fields fields() const;

    std::string logger;
    std::string file;
    std::string line; ///< a decimal number, like `thread` and `pid`
    std::string thread;
    std::string program;
    std::string pid;
    std::string host;
    std::string message; ///< the text without the pairs
    RecordPairs values;
    RecordPairs context;
    bool isTypeKnown = false;
    bool hasLevel = false;

private:
    std::string time_;
    std::optional<std::int64_t> instant_;
    Log::Level::LogLevel level_ = Log::Level::LEVEL_AUDIT;
    std::string shown_;
    std::size_t textBegin_ = 0; ///< offset in `shown_`
};

} // namespace Tools
} // namespace ZAV
