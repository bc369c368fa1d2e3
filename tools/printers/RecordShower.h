#pragma once

#include "filters/RecordFilter.h"
#include "printers/Printer.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Makes the text of those records that are wanted. What continues a record is wanted if the record was.
class RecordShower {
public:
    /// The references must outlive this object.
    RecordShower(const RecordFilter& filter, Printer& printer, std::size_t inputs)
        : filter_(filter), printer_(printer), isWanted_(inputs, 0) {}

    /// \param input the number of the input whose stream has come to its next record
    /// \return the text to show, until the next call; empty if the record is not wanted
    const std::string& show(std::size_t input, RecordStream& stream);

    /// \return what comes behind all records
    const std::string& end();

private:
    const RecordFilter& filter_;
    Printer& printer_;
    std::vector<char> isWanted_; ///< for each input, whether its last record was
    std::string text_;
};

} // namespace Tools
} // namespace ZAV
