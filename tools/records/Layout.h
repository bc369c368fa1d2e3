#pragma once

#include "log/layout/LineLayout.h"

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

} // namespace Tools
} // namespace ZAV
