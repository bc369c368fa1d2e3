#pragma once

#include "options/ColorOption.h"
#include "printers/Printer.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

namespace ZAV {
namespace Tools {

/// The part of a command line that says how records are shown: `--json`, `--zone`, `--color` and, where
/// records have an end, `--count`.
class PrintOptions {
public:
    void addTo(CLI::App& command);
    void addCountTo(CLI::App& command);

    /// Makes the zone that is named that of the process; to be called before times are converted.
    /// \throw UsageError if the zone is unknown
    void useZone() const;

    std::unique_ptr<Printer> printer() const;

private:
    bool json_ = false;
    bool count_ = false;
    std::string zone_;
    ColorOption color_;
    CLI::Option* jsonOption_ = nullptr;
    CLI::Option* zoneOption_ = nullptr;
};

} // namespace Tools
} // namespace ZAV
