#pragma once

#include "filters/RecordFilter.h"
#include "inputs/LogFiles.h"

#include <cstddef>
#include <vector>

namespace ZAV {
namespace Tools {

/// Skips what precedes the last `count` wanted records of an input, without reading all of it.
/// \param files of the input, the oldest first; those not needed are removed, and the first one left begins at a record
///         from which at least `count` wanted ones follow, if the input has so many
void cutToTail(std::vector<LogFile>& files, const RecordFilter& filter, std::size_t count);

} // namespace Tools
} // namespace ZAV
