/// Writes the manual pages of the program zav-log and of its commands into a folder; called by the build.

#include "CommandLine.h"
#include "help/ManualPage.h"

#include <fstream>
#include <iostream>

namespace {

void write(const ZAV::Tools::ManualPage& page, const std::string& folder) {
    std::ofstream file(folder + "/" + page.name() + ".1");
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file << page.text() << std::flush;
}

} // namespace

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
