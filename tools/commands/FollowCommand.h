#pragma once

#include "Command.h"
#include "filters/FilterOptions.h"
#include "inputs/InputOptions.h"
#include "printers/PrintOptions.h"

#include <CLI/CLI.hpp>
#include <cstddef>
#include <string>

namespace ZAV {
namespace Tools {

/// `zav-log follow`: shows the records of log files, and new ones as the files grow.
class FollowCommand : public Command {
public:
    explicit FollowCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    static constexpr std::size_t DEFAULT_LINES = 10;

    InputOptions inputs_;
    FilterOptions filters_;
    PrintOptions printing_;
    std::size_t lines_ = DEFAULT_LINES;
    bool fromStart_ = false;
    std::string state_;
    CLI::Option* linesOption_ = nullptr;
    CLI::Option* stateOption_ = nullptr;
};

} // namespace Tools
} // namespace ZAV
