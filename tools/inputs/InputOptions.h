#pragma once

#include "inputs/LogFiles.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// The part of a command line that says what to read: `PATH...`, `--config`, `--layout` and `--fields`.
class InputOptions {
public:
    void addTo(CLI::App& command);

    /// \throw UsageError if nothing or too much is named; Failure if the property file cannot be read
    std::vector<InputSpec> inputs() const;

private:
    std::vector<InputSpec> inputsOfPaths() const;
    std::vector<InputSpec> inputsOfConfiguration() const;
    std::optional<LineForm> givenForm() const;

    std::vector<std::string> paths_;
    std::string configuration_;
    std::string layout_;
    std::string fields_;
    CLI::Option* fieldsOption_ = nullptr;
};

} // namespace Tools
} // namespace ZAV
