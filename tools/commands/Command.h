#pragma once

#include "Outcome.h"
#include "Output.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace ZAV {
namespace Tools {

/// One command of the program. The class derived from it for that command adds a subcommand with the
/// command's options to the program's `CLI::App`, and hands it over.
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

// Each makes one command of the program; the class is in a source file of its own.
std::unique_ptr<Command> makeCheckCommand(CLI::App& program);
std::unique_ptr<Command> makeExplainCommand(CLI::App& program);
std::unique_ptr<Command> makeCatCommand(CLI::App& program);
std::unique_ptr<Command> makeFollowCommand(CLI::App& program);
std::unique_ptr<Command> makeCtlCommand(CLI::App& program);
std::unique_ptr<Command> makeRecoverCommand(CLI::App& program);

} // namespace Tools
} // namespace ZAV
