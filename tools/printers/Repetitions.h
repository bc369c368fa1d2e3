#pragma once

#include "records/RecordStream.h"

#include <cstddef>
#include <deque>
#include <map>
#include <string>

namespace ZAV {
namespace Tools {

/// Recognises records that several inputs hold, as when two appenders of one program wrote the same message.
///
/// It keeps the latest records, up to 16 MiB. In the order of time, equal ones are close together.
class Repetitions {
public:
    /// Takes the next record of any input.
    /// \param stream at a record that is no continuation
    /// \return true if another input had an equal one before. Records of the two layouts are compared by what both
    ///         show.
    bool isRepeated(std::size_t input, RecordStream& stream);

private:
    struct Seen {
        std::size_t input;
        std::string process; ///< empty if the layout does not show it
    };
    using Table = std::multimap<std::string, Seen>;

    void keep(std::string record, Seen seen);

    Table seen_;
    std::deque<Table::const_iterator> order_; ///< the oldest first
    std::size_t size_ = 0;
};

} // namespace Tools
} // namespace ZAV
