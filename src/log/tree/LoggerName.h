#pragma once

#include <string_view>

namespace ZAV {
namespace Log {

/// Refuses a name that makes the tree absurdly deep: each component is a logger, which keeps its full name,
/// so a long name of many components takes memory by the square of its length.
/// \param path as `Logger::getLogger` splits it: at each dot, empty components included
/// \throw LogException for more than 1,000 components
void requireAcceptableName(std::string_view path);

} // namespace Log
} // namespace ZAV
