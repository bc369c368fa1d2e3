#pragma once

#include "Outcome.h"
#include "Output.h"
#include "commands/Command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// The program `zav-log`: finds the command that its arguments name and runs it.
class CommandLine {
public:
    CommandLine();

    /// \return the exit code of the process
    ExitCode run(int argc, const char* const* argv);

    /// The program's options, with its commands as subcommands; the source of `--help`.
    const CLI::App& app() const { return app_; }

private:
    void checkThatCommandExists(int argc, const char* const* argv) const;
    ExitCode parseAndRun(int argc, const char* const* argv);
    ExitCode runChosen();

    TerminalErrors errors_; ///< first, so that it outlives the other members
    CLI::App app_;
    std::vector<std::unique_ptr<Command>> commands_;
    Output output_;
};

} // namespace Tools
} // namespace ZAV
