#pragma once

#include "inputs/InputSpec.h"
#include "inputs/LogFile.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// \return what the input means at this moment: a file, a series, or `FILE_OR_SERIES` while nothing is there
InputSpec::Kind resolve(const InputSpec& input);

/// Opens the files of a series, the oldest first. In front of them comes a regular file of just the base
/// name, where that may be the name of a file too.
///
/// A rotation meanwhile can make a file appear under two names, and it is given once; none is passed over.
/// \param problems receives a line for each member that cannot be read, is no regular file, or is a symbolic link out
/// of its folder, and for such a link of the base name
std::vector<LogFile> openSeries(const InputSpec& input, std::vector<std::string>& problems);

/// Opens all that the input means, the oldest first; but for the files that were rolled away from one, which
/// `openRolled` opens.
/// \param problems receives a line for each file that cannot be read or is packed, for an input that is missing and may
/// not be, and for the folder of one that may, if that is missing or cannot be read
std::vector<LogFile> openAll(const InputSpec& input, std::vector<std::string>& problems);

} // namespace Tools
} // namespace ZAV
