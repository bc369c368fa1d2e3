#pragma once

#include "log/Level.h"

#include <optional>
#include <string>

namespace ZAV {
namespace Tools {

/// Said behind the library's text for a level that there is none of.
constexpr char LIST_OF_LEVELS[] = "The levels are AUDIT, ERROR, WARNING, INFO, DEBUG and TRACE.";

/// \return the level that a word names, in capitals or not; nothing if it names none
std::optional<Log::Level::LogLevel> findLevel(std::string word);

/// \return the level that a word of the command line names
/// \throw UsageError with the list of levels if it names none
Log::Level::LogLevel readLevel(const std::string& name);

/// \return the name of the level as the library has it; the word itself if it names none
std::string levelName(const std::string& word);

} // namespace Tools
} // namespace ZAV
