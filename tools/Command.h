#pragma once

#include "Outcome.h"
#include "Output.h"

#include <CLI/CLI.hpp>

namespace ZAV {
namespace Tools {

/// One command of the program. Its constructor takes the program's `CLI::App` and adds a subcommand with the
/// command's options to it.
class Command {
public:
    /// \param command the subcommand, which lives as long as the program's `CLI::App`
    explicit Command(CLI::App& command) : command_(command) {}
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    /// \return true if the parsed command line names this command
    bool isChosen() const { return command_.parsed(); }

    /// Runs the command; called after the command line has been parsed.
    /// \param output standard output, which the caller flushes
    /// \throw UsageError, Failure, OutputClosed
    virtual ExitCode run(Output& output) = 0;

protected:
    CLI::App& command_;
};

} // namespace Tools
} // namespace ZAV
