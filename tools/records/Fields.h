#pragma once

#include "log/Level.h"

#include <string_view>

namespace ZAV {
namespace Tools {

/// What a record says. The parts are views into its lines; those that it does not have are empty.
struct Fields {
    std::string_view program;
    std::string_view pid; ///< a decimal number
    std::string_view host;
    std::string_view logger;
    std::string_view file;
    std::string_view line; ///< a decimal number
    std::string_view text; ///< with line feeds between its lines
    bool hasLevel = false; ///< false for a configuration message
    Log::Level::LogLevel level = Log::Level::LEVEL_AUDIT;
};

} // namespace Tools
} // namespace ZAV
