#pragma once

#include <cstddef>
#include <string>

namespace ZAV {
namespace Tools {

/// One thing in a property file that its author surely did not want.
struct Finding {
    enum Severity { AN_ERROR, A_WARNING };

    std::size_t line; ///< counted from 1; 0 for the file as a whole
    Severity severity;
    std::string id;  ///< the name of its kind, for example "unknown-key"
    std::string key; ///< what stands in the line; empty where that is no key
    std::string text;
};

} // namespace Tools
} // namespace ZAV
