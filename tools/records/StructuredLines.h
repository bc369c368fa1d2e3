#pragma once

#include "records/Layout.h"
#include "records/Record.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

namespace ZAV {
namespace Tools {

/// Reads the lines of one file that may have a machine-readable layout. Results are cached, since a line is
/// requested more than once: as the end of the record before it, for its time, and as a record.
class StructuredLines {
public:
    /// A longer line is not parsed, since it may come in parts.
    static constexpr std::size_t LONGEST = 4 * 1024 * 1024;

    explicit StructuredLines(LineForm form);

    /// \param line a line or its beginning
    /// \return false if it certainly has a text layout
    bool mayBegin(std::string_view line) const {
        return !form_.columns.empty() || (mayBeJson_ && !line.empty() && line.front() == '{');
    }

    /// \param line a whole line without its end, for which `mayBegin` is true
    /// \param offset of the line in its file
    /// \return null if the line cannot be parsed
    std::shared_ptr<StructuredRecord> read(std::string_view line, std::uint64_t offset);

    /// Does the same, but removes the record from the cache and hands it over to the caller.
    std::shared_ptr<StructuredRecord> take(std::string_view line, std::uint64_t offset);

private:
    /// A cached line.
    struct Known {
        std::uint64_t offset = 0;
        std::size_t size = 0; ///< 0 if there is none
        std::shared_ptr<StructuredRecord> record;
    };

    Known& find(std::string_view line, std::uint64_t offset);

    LineForm form_;
    bool mayBeJson_;             ///< false if each line begins with a text, which others may have made
    std::array<Known, 2> known_; ///< the line that a record begins with, and the one that ends it
    std::size_t next_ = 0;       ///< the entry that the next line replaces
};

} // namespace Tools
} // namespace ZAV
