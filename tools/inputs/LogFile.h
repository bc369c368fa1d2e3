#pragma once

#include "inputs/LogContent.h"
#include "records/Layout.h"

#include <cstdint>
#include <string>

namespace ZAV {
namespace Tools {

/// A file that is open, or is to be opened when it is read, and the offset to read it from.
struct LogFile {
    std::string path; ///< as the user gave it, or of the member of the series
    LogContent file;
    LineForm layout; ///< as far as it is known beforehand
    std::uint64_t offset = 0;

    /// For a file that was rolled away from the named one: its path without ".gz", whether or not it is
    /// packed by now. Such a file is not opened at the start, since there may be thousands.
    std::string rolledPath;
};

/// Opens a rolled file; has no effect on one that is open.
/// \param problem receives what is wrong
/// \return true if the file is open now
bool openRolled(LogFile& file, std::string& problem);

/// Closes a rolled file; other files stay open.
void closeRolled(LogFile& file);

} // namespace Tools
} // namespace ZAV
