#pragma once

#include "check/Findings.h"
#include "log/config/ConfigurationKeys.h"

#include <string>

namespace ZAV {
namespace Tools {

/// Finds numbers that the library reads as other numbers: "partly-read" and "out-of-range". Numbers that it
/// rejects are not reported here.
/// \param row the key's row in the library's table
void checkNumber(const PropertyLine& line, const Log::ConfigurationKey& row, Findings& findings);

/// \return true if the size in bytes does not fit into 64 bits
bool isProductTooLarge(const std::string& size, const std::string& unit);

} // namespace Tools
} // namespace ZAV
