#pragma once

#include "log/config/ConfigurationKeys.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

// What the library's table of keys says, in the forms in which it is asked for here.

/// \return the words that a key's value may be or hold, for example "KB"
std::vector<std::string> wordsOf(const Log::ConfigurationKey& key);

/// \return the names of the classes of appenders, those of the option "--class" included
std::vector<std::string> appenderClasses();

} // namespace Tools
} // namespace ZAV
