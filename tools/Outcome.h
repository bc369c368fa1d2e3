#pragma once

#include <iostream>
#include <stdexcept>
#include <string>

// How a command ends, and what it says about that.

namespace ZAV {
namespace Tools {

/// The exit codes of all commands.
enum ExitCode : int {
    EXIT_OK = 0,
    EXIT_PROBLEM = 1, ///< something was found, missing or refused
    EXIT_USAGE = 2    ///< the command line is invalid
};

/// Ends a command with `EXIT_PROBLEM`; the text goes to standard error.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Ends a command with `EXIT_USAGE`; the text goes to standard error.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Ends a command silently: the reader of its output has closed the pipe, or has stopped reading when the
/// command is asked to end.
class OutputClosed {};

/// Reports a problem on standard error, prefixed with the program's name.
inline void reportError(const std::string& text) {
    std::cerr << "zav-log: " << text << '\n';
}

} // namespace Tools
} // namespace ZAV
