#pragma once

#include "log/Level.h"
#include "records/Layout.h"
#include "records/Record.h"

#include <string_view>

namespace ZAV {
namespace Tools {

// The parser of the two text layouts.

/// Determines the layout of a line from its level.
/// \param line a line that begins with a time; what follows its end is ignored
/// \return `UNKNOWN` if it has no level where one of the layouts puts it
Layout layoutOf(std::string_view line);

/// \return false if the word is no level
bool findLevelNamed(std::string_view word, Log::Level::LogLevel& level);

/// Sets file and line of a record from one word, as in "app.cpp:8".
void parseLocation(std::string_view location, Fields& fields);

/// Splits a record into its fields.
/// \param lines a record that begins with a time
/// \param layout of its file; `UNKNOWN` counts as `PLAIN`
Fields parseRecord(std::string_view lines, Layout layout);

} // namespace Tools
} // namespace ZAV
