#pragma once

#include "Command.h"
#include "ExitCode.h"
#include "Output.h"
#include "terminal/TerminalErrors.h"

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

    /// What `--help` is made from: the program's options, and its commands as subcommands.
    const CLI::App& app() const { return app_; }

private:
    void checkThatCommandExists(int argc, const char* const* argv) const;
    ExitCode parseAndRun(int argc, const char* const* argv);
    ExitCode runChosen();

    TerminalErrors errors_; ///< whatever is said to the end
    CLI::App app_;
    std::vector<std::unique_ptr<Command>> commands_;
    Output output_;
};

} // namespace Tools
} // namespace ZAV
