#pragma once

namespace ZAV {
namespace Tools {

/// What every command tells the shell that started it.
enum ExitCode : int {
    EXIT_AS_WISHED = 0,
    EXIT_COMPLAINT = 1, ///< something was found, missing or refused
    EXIT_USAGE = 2      ///< the command line makes no sense
};

} // namespace Tools
} // namespace ZAV
