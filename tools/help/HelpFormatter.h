#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace ZAV {
namespace Tools {

/// Writes CLI11's text for `--help`, with an option's argument as one word. The descriptions say what an
/// argument may be and which options go together.
class HelpFormatter : public CLI::Formatter {
public:
    /// \return " ARGUMENT", with " ..." if it may be repeated; empty for a flag and for a positional argument
    std::string make_option_opts(const CLI::Option* option) const override;
};

} // namespace Tools
} // namespace ZAV
