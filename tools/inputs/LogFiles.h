#pragma once

#include "inputs/InputSpec.h"
#include "inputs/LogFile.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// \return what the input currently is: a file, a series, or `FILE_OR_SERIES` while neither exists
InputSpec::Kind resolve(const InputSpec& input);

/// Opens the files of a series, the oldest first. A regular file of exactly the base name comes before them,
/// if the input may also name a file.
///
/// A file that a concurrent rotation shows under two names is returned once; none is missed.
/// \param problems receives a line for each member that cannot be read, is no regular file, or is a symbolic link out
/// of its folder, and for such a link of the base name
std::vector<LogFile> openSeries(const InputSpec& input, std::vector<std::string>& problems);

/// Opens all files of the input, the oldest first, except those that were rolled away from one, which
/// `openRolled` opens.
/// \param problems receives a line for each file that cannot be read or is packed, for an input that is missing and
///         must not be, and for a missing or unreadable folder of one that may be missing
std::vector<LogFile> openAll(const InputSpec& input, std::vector<std::string>& problems);

} // namespace Tools
} // namespace ZAV
