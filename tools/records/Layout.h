#pragma once

namespace ZAV {
namespace Tools {

/// Which of its two forms the library gave the lines of a file.
enum class Layout {
    UNKNOWN,
    PLAIN,  ///< time, logger, location, level, text
    PROCESS ///< the same, with program, process id and host behind the time
};

} // namespace Tools
} // namespace ZAV
