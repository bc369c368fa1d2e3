#pragma once

#include "check/Finding.h"

#include <string>

namespace ZAV {
namespace Tools {

/// \return a finding as a compiler would show it, without an end of line
std::string toText(const std::string& fileName, const Finding& finding, bool withColors);

/// \return a finding as an object of JSON, without an end of line
std::string toJson(const std::string& fileName, const Finding& finding);

} // namespace Tools
} // namespace ZAV
