#pragma once

#include "log/Level.h"
#include "records/TimeStamp.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Tools {

/// A pair of a key and a value.
struct RecordPair {
    std::string key;
    std::string text;
    bool isText; ///< false for a number or another JSON value, which `text` holds as in JSON
};
using RecordPairs = std::vector<RecordPair>;

/// The fields of a record, as views into its lines; those that it does not have are empty.
struct Fields {
    std::string_view program;
    std::string_view pid; ///< a decimal number
    std::string_view host;
    std::string_view logger;
    std::string_view file;
    std::string_view line;                ///< a decimal number
    std::string_view thread;              ///< a decimal number
    std::string_view text;                ///< with line feeds between its lines; known pairs are at its end
    std::string_view message;             ///< the text without those
    const RecordPairs* values = nullptr;  ///< null if they are not known
    const RecordPairs* context = nullptr; ///< the same
    bool isTypeKnown = true;
    bool hasLevel = false; ///< false for a configuration message
    Log::Level::LogLevel level = Log::Level::LEVEL_AUDIT;
};

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

/// A record as it is in a file: a line with a time and the lines without one that follow it. One of a
/// machine-readable layout is given as `plain` would show it.
struct Record {
    std::string_view lines; ///< without the last line end; the others are single line feeds
    const StructuredRecord* structured = nullptr; ///< what it is or belongs to; null in the text layouts
    bool hasTime = false;
    /// Belongs to the record before it: the rest of a very long one, or lines that were written later.
    bool isContinuation = false;
    bool isPart = false;      ///< of a very long record, the rest of which comes next
    bool isCutInLine = false; ///< ends within a line, which the next record continues
    std::uint64_t end = 0;    ///< the offset in the file after the record

    std::string_view time() const {
        return hasTime ? lines.substr(0, TIME_STAMP_LENGTH) : std::string_view();
    }
};

} // namespace Tools
} // namespace ZAV
