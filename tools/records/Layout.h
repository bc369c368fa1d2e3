#pragma once

#include "log/layout/LineLayout.h"

#include <cstdint>
#include <vector>

namespace ZAV {
namespace Tools {

class LogContent;
class RecordReader;
struct Record;

/// Which of the library's two text layouts the lines of a file have.
enum class Layout {
    UNKNOWN,
    PLAIN,  ///< time, logger, location, level, text
    PROCESS ///< the same, with program, process id and host after the time
};

/// What is known of a file's lines before they are read.
struct LineForm {
    LineForm(Layout text = Layout::UNKNOWN) : layout(text) {}

    Layout layout;                    ///< of lines that are neither of `json` nor of `fields`
    std::vector<Log::Column> columns; ///< of the layout `fields`; empty if the file does not have it
    bool hasJson = true;              ///< a line of `json` is a record, whatever the others are
};

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
