#pragma once

#include "log/config/ConfigurationKeys.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

// Look-ups in the library's table of keys.

/// \return the words that a key's value may be or hold, for example "KB"
std::vector<std::string> wordsOf(const Log::ConfigurationKey& key);

/// \return the names of all appender classes, including those given with "--class"
std::vector<std::string> appenderClasses();

} // namespace Tools
} // namespace ZAV
