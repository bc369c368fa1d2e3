#pragma once

#include "Command.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// `zav-log ctl`: sends one request to a running program and shows its answer.
class CtlCommand : public Command {
public:
    explicit CtlCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    std::string requestLine() const;

    std::string address_;
    std::vector<std::string> request_; ///< with its arguments
};

} // namespace Tools
} // namespace ZAV
