#pragma once

namespace ZAV {
namespace Tools {

/// The exit codes of all commands.
enum ExitCode : int {
    EXIT_AS_WISHED = 0,
    EXIT_COMPLAINT = 1, ///< something was found, missing or refused
    EXIT_USAGE = 2      ///< the command line is invalid
};

} // namespace Tools
} // namespace ZAV
