#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace ZAV {
namespace Tools {

/// The option `--color auto|always|never` of a command.
class ColorOption {
public:
    void addTo(CLI::App& command);

    /// \return true if standard output is to be coloured; called after the command line was parsed
    bool isOn() const;

private:
    std::string choice_ = "auto";
};

} // namespace Tools
} // namespace ZAV
