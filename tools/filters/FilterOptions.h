#pragma once

#include "filters/RecordFilter.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// The part of a command line that says which records are wanted: `--level`, `--logger`, `--type`, `--value`,
/// `--since`, `--until`, `--grep` and `--invert`.
class FilterOptions {
public:
    void addTo(CLI::App& command);

    /// \throw UsageError if the value of an option is invalid
    RecordFilter filter() const;

private:
    std::string level_;
    std::vector<std::string> loggers_;
    std::vector<std::string> values_;
    std::string type_;
    std::string since_;
    std::string until_;
    std::string pattern_;
    bool invert_ = false;
    CLI::Option* levelOption_ = nullptr;
    CLI::Option* sinceOption_ = nullptr;
    CLI::Option* untilOption_ = nullptr;
    CLI::Option* patternOption_ = nullptr;
};

} // namespace Tools
} // namespace ZAV
