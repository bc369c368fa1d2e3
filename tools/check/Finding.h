#pragma once

#include <cstddef>
#include <string>

namespace ZAV {
namespace Tools {

/// Something in a property file that its author cannot have intended.
struct Finding {
    enum Severity { AN_ERROR, A_WARNING };

    std::size_t line; ///< counted from 1; 0 for the file as a whole
    Severity severity;
    std::string id;  ///< the name of its kind, for example "unknown-key"
    std::string key; ///< the key in the line; empty if there is none
    std::string text;
};

} // namespace Tools
} // namespace ZAV
