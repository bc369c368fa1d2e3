#pragma once

#include "log/Level.h"

#include <optional>
#include <string>

namespace ZAV {
namespace Tools {

/// Appended to the library's message about an unknown level.
constexpr char LIST_OF_LEVELS[] = "The levels are AUDIT, ERROR, WARNING, INFO, DEBUG and TRACE.";

/// \return the level that a word names, in capitals or not; nothing if it names none
std::optional<Log::Level::LogLevel> findLevel(std::string word);

/// \return the level that a word of the command line names
/// \throw UsageError with the list of levels if it names none
Log::Level::LogLevel readLevel(const std::string& name);

/// \return the level's name as the library spells it; the word itself if it names none
std::string levelName(const std::string& word);

} // namespace Tools
} // namespace ZAV
