#pragma once

#include "check/Finding.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// \return what is wrong with a property file, in the order of its lines
std::vector<Finding> checkFile(const std::string& fileName);

} // namespace Tools
} // namespace ZAV
