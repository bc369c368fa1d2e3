#include "help/HelpFormatter.h"

namespace ZAV {
namespace Tools {

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    // After a colon, CLI11 adds what the option's checks accept.
    const std::string type = option->get_type_name();
    if (type.empty() || option->get_positional()) {
        return "";
    }
    const bool isRepeatable = option->get_expected_max() >= CLI::detail::expected_max_vector_size;
    return " " + type.substr(0, type.find(':')) + (isRepeatable ? " ..." : "");
}

} // namespace Tools
} // namespace ZAV
