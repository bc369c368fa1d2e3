#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <string>

namespace ZAV {
namespace Tools {

/// Adds an option that takes a number of records, always read as decimal.
/// \param count receives the number; must outlive the command
CLI::Option* addRecordCount(CLI::App& command, const std::string& name, std::size_t& count,
                            const std::string& meaning);

} // namespace Tools
} // namespace ZAV
