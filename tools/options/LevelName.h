#pragma once

#include "log/Level.h"

#include <string>

namespace ZAV {
namespace Tools {

/// \return the level that a word of the command line names
/// \throw UsageError if it names none
Log::Level::LogLevel readLevel(const std::string& name);

} // namespace Tools
} // namespace ZAV
