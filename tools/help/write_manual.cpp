/// Writes the manual pages of the program zav-log and of its commands into a folder; called by the build.

#include "CommandLine.h"
#include "help/HelpFormatter.h"

#include <CLI/CLI.hpp>
#include <cctype>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {
namespace {

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

/// Escapes what is special in man(7).
std::string escape(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        const bool beginsLine = escaped.empty() || escaped.back() == '\n';
        if (beginsLine && (character == '.' || character == '\'')) {
            escaped += "\\&";
        }
        if (character == '\\') {
            escaped += "\\e";
        } else if (character == '-') {
            escaped += "\\-";
        } else {
            escaped += character;
        }
    }
    return escaped;
}

void writeItem(std::ostringstream& page, const std::string& term, const std::string& meaning) {
    page << ".TP\n\\fB" << escape(term) << "\\fR\n" << escape(meaning) << '\n';
}

/// Turns "requests:" and the lines below it into a section of that name, verbatim.
void writeFooter(std::ostringstream& page, const std::string& footer) {
    const std::size_t colon = footer.find(":\n");
    std::string heading = footer.substr(0, colon);
    for (char& character : heading) {
        character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    }
    page << ".SH " << escape(heading) << "\n.nf\n" << escape(footer.substr(colon + 2)) << "\n.fi\n";
}

std::string decapitalised(std::string text) {
    text.at(0) = static_cast<char>(std::tolower(static_cast<unsigned char>(text.at(0))));
    return text;
}

ManualPage::ManualPage(const CLI::App& app)
    : app_(app), program_(app.get_parent() == nullptr ? app : *app.get_parent()), name_(program_.get_name()) {
    if (&app_ != &program_) {
        name_ += "-" + app_.get_name();
    }
}

std::string ManualPage::text() const {
    std::ostringstream page;
    writeHead(page);
    writeOptions(page, "ARGUMENTS", true);
    writeOptions(page, "OPTIONS", false);
    writeCommands(page);
    writeFooters(page);
    writeSeeAlso(page);
    return page.str();
}

void ManualPage::writeHead(std::ostringstream& page) const {
    const std::string usage = HelpFormatter().make_usage(
        &app_, program_.get_name() + (&app_ == &program_ ? "" : " " + app_.get_name()));
    page << ".TH \"" << escape(name_) << "\" 1 \"\" \"ZAV Log " ZAV_LOG_VERSION "\" \"User Commands\"\n"
         << ".SH NAME\n"
         << escape(name_) << " \\- " << escape(decapitalised(app_.get_description())) << '\n'
         << ".SH SYNOPSIS\n"
         << escape(usage.substr(std::string("Usage: ").size())) << ".SH DESCRIPTION\n"
         << escape(app_.get_description()) << ".\n";
}

void ManualPage::writeOptions(std::ostringstream& page, const std::string& heading,
                              bool arePositional) const {
    const HelpFormatter help;
    const std::vector<const CLI::Option*> options = app_.get_options(
        [&](const CLI::Option* option) { return option->get_positional() == arePositional; });
    if (!options.empty()) {
        page << ".SH " << heading << '\n';
    }
    for (const CLI::Option* option : options) {
        writeItem(page, help.make_option_name(option, arePositional) + help.make_option_opts(option),
                  help.make_option_desc(option));
    }
}

void ManualPage::writeCommands(std::ostringstream& page) const {
    const std::vector<const CLI::App*> commands = app_.get_subcommands({});
    if (!commands.empty()) {
        page << ".SH COMMANDS\n";
    }
    for (const CLI::App* command : commands) {
        writeItem(page, command->get_name(), command->get_description());
    }
}

/// The sections of a footer are separated by empty lines.
void ManualPage::writeFooters(std::ostringstream& page) const {
    std::string footers = app_.get_footer();
    for (std::size_t end = footers.find("\n\n"); end != std::string::npos; end = footers.find("\n\n")) {
        writeFooter(page, footers.substr(0, end));
        footers.erase(0, end + 2);
    }
    writeFooter(page, footers);
}

void ManualPage::writeSeeAlso(std::ostringstream& page) const {
    page << ".SH SEE ALSO\n";
    std::string separator;
    for (const CLI::App* command : program_.get_subcommands({})) {
        if (command != &app_) {
            page << separator << ".BR " << escape(ManualPage(*command).name()) << " (1)";
            separator = ",\n";
        }
    }
    if (&app_ != &program_) {
        page << separator << ".BR " << escape(program_.get_name()) << " (1)";
    }
    page << '\n';
}

void write(const ManualPage& page, const std::string& folder) {
    std::ofstream file(folder + "/" + page.name() + ".1");
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file << page.text() << std::flush;
}

} // namespace
} // namespace Tools
} // namespace ZAV

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " FOLDER\n";
        return 2;
    }
    const ZAV::Tools::CommandLine commandLine;
    write(ZAV::Tools::ManualPage(commandLine.app()), argv[1]);
    for (const CLI::App* command : commandLine.app().get_subcommands({})) {
        write(ZAV::Tools::ManualPage(*command), argv[1]);
    }
    return 0;
}
