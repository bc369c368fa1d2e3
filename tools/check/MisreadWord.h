#pragma once

#include "check/Findings.h"
#include "log/config/ConfigurationKeys.h"

namespace ZAV {
namespace Tools {

/// Finds the words of a value that count as others: "unknown-unit" and "unknown-value".
/// \param row what the library's table says about the key
void checkWords(const PropertyLine& line, const Log::ConfigurationKey& row, Findings& findings);

} // namespace Tools
} // namespace ZAV
