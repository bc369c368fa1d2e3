#pragma once

#include <CLI/CLI.hpp>
#include <set>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// The option "--class": appender classes that programs register themselves, and that would otherwise look
/// misspelt.
class CustomAppenderClasses {
public:
    void addTo(CLI::App& command);

    /// Registers the classes for this process. Their appenders write nothing.
    /// \throw UsageError for a class of the library
    void registerAll() const;

    /// \return the classes that are registered
    static const std::set<std::string>& registered();

private:
    std::vector<std::string> names_;
};

} // namespace Tools
} // namespace ZAV
