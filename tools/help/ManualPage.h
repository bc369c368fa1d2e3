#pragma once

#include <CLI/CLI.hpp>
#include <sstream>
#include <string>

namespace ZAV {
namespace Tools {

/// A manual page of the program or of one of its commands, made from what `--help` shows.
class ManualPage {
public:
    /// \param app the program or one of its commands; must outlive the page
    explicit ManualPage(const CLI::App& app);

    /// \return "zav-log" or "zav-log-COMMAND", also the page's file name before ".1"
    const std::string& name() const { return name_; }

    /// \return the page, in the markup of man(7)
    std::string text() const;

private:
    void writeHead(std::ostringstream& page) const;
    void writeOptions(std::ostringstream& page, const std::string& heading, bool arePositional) const;
    void writeCommands(std::ostringstream& page) const;
    void writeFooters(std::ostringstream& page) const;
    void writeSeeAlso(std::ostringstream& page) const;

    const CLI::App& app_;
    const CLI::App& program_;
    std::string name_;
};

} // namespace Tools
} // namespace ZAV
