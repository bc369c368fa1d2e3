#pragma once

#include "log/layout/LineLayout.h"
#include "records/Record.h"

#include <string_view>
#include <vector>

namespace ZAV {
namespace Tools {

/// Which of the library's two text layouts the lines of a file have.
enum class Layout {
    UNKNOWN,
    PLAIN,  ///< time, logger, location, level, text
    PROCESS ///< the same, with program, process id and host after the time
};

/// What is known of a file's lines before they are read.
struct LineForm {
    LineForm(Layout text = Layout::UNKNOWN) : layout(text) {}

    Layout layout;                    ///< of lines that are neither of `json` nor of `fields`
    std::vector<Log::Column> columns; ///< of the layout `fields`; empty if the file does not have it
    bool hasJson = true;              ///< a line of `json` is a record, whatever the others are
};

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
