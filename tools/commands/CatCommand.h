#pragma once

#include "Command.h"
#include "filters/FilterOptions.h"
#include "inputs/InputOptions.h"
#include "printers/PrintOptions.h"

#include <CLI/CLI.hpp>

namespace ZAV {
namespace Tools {

/// `zav-log cat`: merges log files and shows them as one log.
class CatCommand : public Command {
public:
    explicit CatCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    InputOptions inputs_;
    FilterOptions filters_;
    PrintOptions printing_;
};

} // namespace Tools
} // namespace ZAV
