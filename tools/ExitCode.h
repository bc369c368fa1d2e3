#pragma once

namespace ZAV {
namespace Tools {

/// The exit codes of all commands.
enum ExitCode : int {
    EXIT_OK = 0,
    EXIT_PROBLEM = 1, ///< something was found, missing or refused
    EXIT_USAGE = 2    ///< the command line is invalid
};

} // namespace Tools
} // namespace ZAV
