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
    std::string make_option_opts(const CLI::Option* option) const override {
        // After a colon, CLI11 adds what the option's checks accept.
        const std::string type = option->get_type_name();
        if (type.empty() || option->get_positional()) {
            return "";
        }
        const bool isRepeatable = option->get_expected_max() >= CLI::detail::expected_max_vector_size;
        return " " + type.substr(0, type.find(':')) + (isRepeatable ? " ..." : "");
    }
};

} // namespace Tools
} // namespace ZAV
