#pragma once

#include "inputs/InputSpec.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// The part of a command line that says what to read: `PATH...`, `--config` and `--layout`.
class InputOptions {
public:
    void addTo(CLI::App& command);

    /// \throw UsageError if nothing or too much is named; Failure if the property file cannot be read
    std::vector<InputSpec> inputs() const;

private:
    std::vector<InputSpec> inputsOfPaths() const;
    std::vector<InputSpec> inputsOfConfiguration() const;

    std::vector<std::string> paths_;
    std::string configuration_;
    std::string layout_;
};

} // namespace Tools
} // namespace ZAV
