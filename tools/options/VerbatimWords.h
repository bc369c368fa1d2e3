#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Keeps CLI11 from interpreting words that are meant literally: it takes "[a,b]" for a list, and every word
/// with a dash for an option, also in the argument of `ctl ADDRESS command NAME`.
namespace VerbatimWords {

/// \return the words after the program's name, in reverse order as CLI11 expects them, with a mark on those that it
///         would misread
std::vector<std::string> marked(int argc, const char* const* argv);

/// Makes all options of all commands remove the mark.
void acceptMarked(CLI::App& program);

} // namespace VerbatimWords
} // namespace Tools
} // namespace ZAV
