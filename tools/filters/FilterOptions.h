#pragma once

#include "filters/RecordFilter.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// The part of a command line that says which records are wanted: `--level`, `--logger`, `--since`,
/// `--until` and `--grep`.
class FilterOptions {
public:
    void addTo(CLI::App& command);

    /// \throw UsageError if one of the options cannot be read
    RecordFilter filter() const;

private:
    std::string level_;
    std::vector<std::string> loggers_;
    std::string since_;
    std::string until_;
    std::string pattern_;
    CLI::Option* levelOption_ = nullptr;
    CLI::Option* sinceOption_ = nullptr;
    CLI::Option* untilOption_ = nullptr;
    CLI::Option* patternOption_ = nullptr;
};

} // namespace Tools
} // namespace ZAV
