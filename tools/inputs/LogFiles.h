#pragma once

#include "inputs/LogContent.h"
#include "records/Layout.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// An input that the user has named.
struct InputSpec {
    enum Kind {
        FILE_OR_SERIES, ///< the series of that base name if it has members; otherwise as `FILE`
        FILE,           ///< with the files rolled away from it
        SERIES,
        STANDARD_INPUT
    };

    std::string path; ///< of the file, or of the series without the final digit
    Kind kind = FILE_OR_SERIES;
    LineForm layout;           ///< as far as it is known beforehand
    bool mayBeMissing = false; ///< as long as its folder is there and can be read
    bool mayBeLink = false;    ///< may lead out of its folder: the user has typed this very path
};

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

/// \return what the input currently is: a file, a series, or `FILE_OR_SERIES` while neither exists
InputSpec::Kind resolve(const InputSpec& input);

/// Opens all files of the input, the oldest first, except those that were rolled away from one, which
/// `openRolled` opens.
/// \param problems receives a line for each file that cannot be read or is packed, for an input that is missing and
///         must not be, and for a missing or unreadable folder of one that may be missing
std::vector<LogFile> openAll(const InputSpec& input, std::vector<std::string>& problems);

/// Opens a rolled file; has no effect on one that is open.
/// \param problem receives what is wrong
/// \return true if the file is open now
bool openRolled(LogFile& file, std::string& problem);

/// Closes a rolled file; other files stay open.
void closeRolled(LogFile& file);

} // namespace Tools
} // namespace ZAV
