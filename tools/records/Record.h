#pragma once

#include "records/StructuredRecord.h"
#include "records/TimeStamp.h"

#include <cstdint>
#include <string_view>

namespace ZAV {
namespace Tools {

/// A record as it is in a file: a line with a time and the lines without one that follow it. One of a
/// machine-readable layout is given as `plain` would show it.
struct Record {
    std::string_view lines; ///< without the last line end; the others are single line feeds
    const StructuredRecord* machine = nullptr; ///< what the record is or belongs to; null in the text layouts
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
