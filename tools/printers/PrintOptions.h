#pragma once

#include "options/ColorOption.h"
#include "printers/Printer.h"
#include "printers/RecordPresenter.h"

#include <CLI/CLI.hpp>
#include <cstddef>
#include <memory>
#include <string>

namespace ZAV {
namespace Tools {

/// The part of a command line that says how records are shown: `--json`, `--source`, `--unique`, `--context`,
/// `--zone`, `--color` and, where records have an end, `--tail` and `--count`.
class PrintOptions {
public:
    void addTo(CLI::App& command);
    void addEndTo(CLI::App& command);

    /// Sets the time zone of the process to the named one; to be called before times are converted.
    /// \throw UsageError if the zone is unknown
    void useZone() const;

    std::unique_ptr<Printer> printer() const;

    /// Applies the options to a presenter.
    void applyTo(RecordPresenter& presenter) const;

private:
    bool json_ = false;
    bool count_ = false;
    bool source_ = false;
    bool unique_ = false;
    std::size_t context_ = 0;
    std::size_t tail_ = 0;
    std::string zone_;
    ColorOption color_;
    CLI::Option* jsonOption_ = nullptr;
    CLI::Option* contextOption_ = nullptr;
    CLI::Option* tailOption_ = nullptr;
    CLI::Option* zoneOption_ = nullptr;
};

} // namespace Tools
} // namespace ZAV
