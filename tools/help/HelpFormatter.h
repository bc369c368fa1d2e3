#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace ZAV {
namespace Tools {

/// Writes the text of `--help`: CLI11's, with an option's argument in one word. What an argument may be and
/// which options go together stands in the descriptions.
class HelpFormatter : public CLI::Formatter {
public:
    /// \return " ARGUMENT", with " ..." if it may be repeated; nothing for a flag and for what is no option
    std::string make_option_opts(const CLI::Option* option) const override;
};

} // namespace Tools
} // namespace ZAV
