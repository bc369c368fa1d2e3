#pragma once

#include "Outcome.h"
#include "Output.h"

#include <CLI/CLI.hpp>
#include <memory>

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

// Each makes one command of the program; the class is in a source file of its own.
std::unique_ptr<Command> makeCheckCommand(CLI::App& program);
std::unique_ptr<Command> makeExplainCommand(CLI::App& program);
std::unique_ptr<Command> makeCatCommand(CLI::App& program);
std::unique_ptr<Command> makeFollowCommand(CLI::App& program);
std::unique_ptr<Command> makeCtlCommand(CLI::App& program);
std::unique_ptr<Command> makeRecoverCommand(CLI::App& program);

/// A section of the help of the commands that merge files.
constexpr const char* ORDER_OF_RECORDS =
    "order of the records:\n"
    "  Files are merged in the order of time; within a file or a series the order stays.\n"
    "  A record whose time is later than that of the next one in its file comes in the\n"
    "  next one's place, so that a clock that was wrong once holds nothing up.";

} // namespace Tools
} // namespace ZAV
