#include "commands/CheckCommand.h"

#include "check/Checker.h"
#include "check/FindingText.h"

namespace ZAV {
namespace Tools {

CheckCommand::CheckCommand(CLI::App& program)
    : Command(*program.add_subcommand("check", "Find what is wrong with property files")) {
    command_.add_option("FILE", files_, "A property file")->required()->type_name("");
    command_.add_flag("--json", isJson_, "Show the findings as one array of JSON");
    command_.add_flag("--strict", isStrict_, "Let a warning be as bad as an error");
    classes_.addTo(command_);
    color_.addTo(command_);
}

ExitCode CheckCommand::run(Output& output) {
    classes_.registerAll();
    Checker checker;
    bool hasComplaint = false;
    std::string separator = "[\n";
    for (const std::string& file : files_) {
        for (const Finding& finding : checker.check(file)) {
            hasComplaint = hasComplaint || isComplaint(finding);
            output.write(isJson_ ? separator + toJson(file, finding)
                                 : toText(file, finding, color_.isOn()) + '\n');
            separator = ",\n";
        }
    }
    if (isJson_) {
        const bool isEmpty = separator == "[\n";
        output.write(isEmpty ? "[]\n" : "\n]\n");
    }
    return hasComplaint ? EXIT_PROBLEM : EXIT_OK;
}

bool CheckCommand::isComplaint(const Finding& finding) const {
    return isStrict_ || finding.severity == Finding::AN_ERROR;
}

} // namespace Tools
} // namespace ZAV
