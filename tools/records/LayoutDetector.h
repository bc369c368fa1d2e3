#pragma once

#include "inputs/LogContent.h"
#include "records/Layout.h"
#include "records/Record.h"
#include "records/RecordReader.h"

#include <cstdint>

namespace ZAV {
namespace Tools {

/// Determines the layout of one file from its first line with a level, wherever in the file that is. Of a
/// pipe, only what has been read is considered.
class LayoutDetector {
public:
    /// \param file must outlive the detector
    /// \param given a layout that is known beforehand, or `UNKNOWN`
    LayoutDetector(const LogContent& file, Layout given);

    /// \param record a record of the file; the records of a growing file must be passed in order
    /// \param reader has returned the record
    /// \return the file's layout; `UNKNOWN` if no line of the file has a level yet
    Layout layoutFor(const Record& record, const RecordReader& reader);

private:
    const LogContent& file_;
    Layout layout_;
    bool hasScanned_ = false;
    std::uint64_t scannedTo_ = 0; ///< of a pipe
};

} // namespace Tools
} // namespace ZAV
