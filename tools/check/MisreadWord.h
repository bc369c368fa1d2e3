#pragma once

#include "check/Findings.h"
#include "log/config/ConfigurationKeys.h"

namespace ZAV {
namespace Tools {

/// Finds words of a value that the library reads as something else: "unknown-unit" and "unknown-value".
/// \param row the key's row in the library's table
void checkWords(const PropertyLine& line, const Log::ConfigurationKey& row, Findings& findings);

} // namespace Tools
} // namespace ZAV
