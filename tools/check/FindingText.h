#pragma once

#include "check/Finding.h"

#include <string>

namespace ZAV {
namespace Tools {

/// \return a finding in the form of a compiler message, without a line end
std::string toText(const std::string& fileName, const Finding& finding, bool withColors);

/// \return a finding as a JSON object, without a line end
std::string toJson(const std::string& fileName, const Finding& finding);

} // namespace Tools
} // namespace ZAV
