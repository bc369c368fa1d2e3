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
    /// A section of the help of the commands that merge these inputs.
    static constexpr const char* ORDER_OF_RECORDS =
        "order of the records:\n"
        "  Files are merged in the order of time; within a file or a series the order stays.\n"
        "  A record whose time is later than that of the next one in its file comes in the\n"
        "  next one's place, so that a clock that was wrong once holds nothing up.";

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
