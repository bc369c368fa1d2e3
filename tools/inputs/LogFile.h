#pragma once

#include "inputs/LogContent.h"
#include "records/Layout.h"

#include <cstdint>
#include <string>

namespace ZAV {
namespace Tools {

/// A file that is open, or is to be opened when it is read, and from where it is to be read.
struct LogFile {
    std::string path; ///< as the user gave it, or of the member of the series
    LogContent file;
    LineForm layout; ///< as far as it is known beforehand
    std::uint64_t offset = 0;

    /// Of a file that was rolled away from the one that was named: its path without ".gz", whether it is
    /// packed by now or not. Such a file is not open from the start, since there may be thousands.
    std::string rolledPath;
};

/// Opens a rolled file; without effect on one that is open.
/// \param problem receives what is wrong
/// \return true if the file is open now
bool openRolled(LogFile& file, std::string& problem);

/// Closes a rolled file that is not read now.
void closeRolled(LogFile& file);

} // namespace Tools
} // namespace ZAV
