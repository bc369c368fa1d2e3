#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Keeps CLI11 from reading more into the words of a command line than stands in them: it takes "[a,b]" for a
/// list, and every word with a dash for an option, also in the argument of `ctl ADDRESS command NAME`.
namespace VerbatimWords {

/// \return the words behind the program's name, last one first as CLI11 wants them, those with a mark that
///         would be misread
std::vector<std::string> marked(int argc, const char* const* argv);

/// Has all options of all commands take the mark off again.
void acceptMarked(CLI::App& program);

} // namespace VerbatimWords
} // namespace Tools
} // namespace ZAV
