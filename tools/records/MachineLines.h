#pragma once

#include "records/Layout.h"
#include "records/MachineRecord.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

namespace ZAV {
namespace Tools {

/// Reads the lines of one file that may be of a layout for machines. A line is asked for more than once: as
/// the end of the record before it, for its time, and as a record.
class MachineLines {
public:
    /// A longer line is not read: it may come in parts.
    static constexpr std::size_t LONGEST = 4 * 1024 * 1024;

    explicit MachineLines(LineForm form);

    /// \param line a line or its beginning
    /// \return false if it is of a text layout for certain
    bool mayBegin(std::string_view line) const {
        return !form_.columns.empty() || (mayBeJson_ && !line.empty() && line.front() == '{');
    }

    /// \param line a whole line, its end left out; one for which `mayBegin` is true
    /// \param offset of the line in its file
    /// \return null if the line cannot be read
    std::shared_ptr<MachineRecord> read(std::string_view line, std::uint64_t offset);

    /// Does the same and forgets the record, which is the caller's own then.
    std::shared_ptr<MachineRecord> take(std::string_view line, std::uint64_t offset);

private:
    /// A line that was read.
    struct Known {
        std::uint64_t offset = 0;
        std::size_t size = 0; ///< 0 if there is none
        std::shared_ptr<MachineRecord> record;
    };

    Known& find(std::string_view line, std::uint64_t offset);

    LineForm form_;
    bool mayBeJson_;             ///< not where each line begins with a text, which somebody else has made
    std::array<Known, 2> known_; ///< the line that a record begins with, and the one that ends it
    std::size_t next_ = 0;       ///< which of them the next line takes the place of
};

} // namespace Tools
} // namespace ZAV
