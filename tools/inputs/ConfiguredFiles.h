#pragma once

#include "inputs/InputSpec.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// \return the files of all file appenders of a property file, in the order of the appenders' names; a file that two of
///         them share comes once
/// \throw Util::UtilException if the property file cannot be read
std::vector<InputSpec> configuredFiles(const std::string& propertyFile);

} // namespace Tools
} // namespace ZAV
