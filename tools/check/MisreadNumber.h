#pragma once

#include "check/Findings.h"
#include "log/config/ConfigurationKeys.h"

#include <string>

namespace ZAV {
namespace Tools {

/// Finds numbers that count as others: "partly-read" and "out-of-range". A number that the library rejects is
/// left alone.
/// \param row what the library's table says about the key
void checkNumber(const PropertyLine& line, const Log::ConfigurationKey& row, Findings& findings);

/// \return true if a size in bytes does not fit into the number that holds it
bool isProductTooLarge(const std::string& size, const std::string& unit);

} // namespace Tools
} // namespace ZAV
