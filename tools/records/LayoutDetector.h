#pragma once

#include "platform/InputFile.h"
#include "records/Layout.h"
#include "records/Record.h"

namespace ZAV {
namespace Tools {

/// Decides the layout of one file by its first line with a level, wherever in the file that stands.
class LayoutDetector {
public:
    /// \param file must outlive the detector
    /// \param given a layout that is known beforehand, or `UNKNOWN`
    LayoutDetector(const Platform::InputFile& file, Layout given);

    /// \param record a record of the file; the records of a growing file must come here one after another
    /// \return the file's layout; `UNKNOWN` if no line of the file has a level yet
    Layout layoutFor(const Record& record);

private:
    const Platform::InputFile& file_;
    Layout layout_;
    bool hasScanned_ = false;
};

} // namespace Tools
} // namespace ZAV
