#pragma once

#include "ExitCode.h"
#include "Output.h"

namespace ZAV {
namespace Tools {

/// One command of the program. Its constructor takes the `CLI::App` of the whole program and adds a
/// subcommand with the command's options to it.
class Command {
public:
    Command() = default;
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    /// \return true if the parsed command line names this command
    virtual bool isChosen() const = 0;

    /// Does what the command line says; called after it was parsed.
    /// \param output standard output, which the caller flushes
    /// \throw UsageError, Failure, OutputClosed
    virtual ExitCode run(Output& output) = 0;
};

} // namespace Tools
} // namespace ZAV
