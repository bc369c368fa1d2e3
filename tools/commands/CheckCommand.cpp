#include "commands/Command.h"

#include "check/Checker.h"
#include "check/Findings.h"
#include "config/CustomAppenderClasses.h"
#include "options/ColorOption.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

/// `zav-log check`: reports what the library would do with property files that their authors cannot have
/// intended.
class CheckCommand : public Command {
public:
    explicit CheckCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    bool isComplaint(const Finding& finding) const;

    std::vector<std::string> files_;
    bool isJson_ = false;
    bool isStrict_ = false;
    CustomAppenderClasses classes_;
    ColorOption color_;
};

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

} // namespace

std::unique_ptr<Command> makeCheckCommand(CLI::App& program) {
    return std::make_unique<CheckCommand>(program);
}

} // namespace Tools
} // namespace ZAV
