#include "CommandLine.h"

#include "Complaint.h"
#include "Failure.h"
#include "OutputClosed.h"
#include "UsageError.h"
#include "commands/CatCommand.h"
#include "commands/CheckCommand.h"
#include "commands/CtlCommand.h"
#include "commands/ExplainCommand.h"
#include "commands/FollowCommand.h"
#include "help/HelpFormatter.h"

namespace ZAV {
namespace Tools {

namespace {

const char* const EXIT_STATUS = "exit status:\n"
                                "  0  success\n"
                                "  1  something was found, is missing or was refused\n"
                                "  2  wrong usage";

ExitCode endWith(ExitCode code, const std::string& text) {
    complain(text);
    return code;
}

} // namespace

CommandLine::CommandLine()
    : app_("Read, check and steer what the logging library ZAV Log writes", "zav-log") {
    app_.formatter(std::make_shared<HelpFormatter>());
    app_.footer(EXIT_STATUS);
    app_.set_version_flag("--version", "zav-log " ZAV_LOG_VERSION);
    app_.require_subcommand(1);
    // Each command of the program has a line here, in the order in which --help shows them.
    commands_.push_back(std::make_unique<CheckCommand>(app_));
    commands_.push_back(std::make_unique<ExplainCommand>(app_));
    commands_.push_back(std::make_unique<CatCommand>(app_));
    commands_.push_back(std::make_unique<FollowCommand>(app_));
    commands_.push_back(std::make_unique<CtlCommand>(app_));
}

ExitCode CommandLine::run(int argc, const char* const* argv) {
    try {
        const ExitCode code = parseAndRun(argc, argv);
        output_.flush();
        return code;
    } catch (const OutputClosed&) {
        return EXIT_AS_WISHED;
    } catch (const UsageError& error) {
        return endWith(EXIT_USAGE, error.what());
    } catch (const std::exception& error) {
        return endWith(EXIT_COMPLAINT, error.what());
    }
}

ExitCode CommandLine::parseAndRun(int argc, const char* const* argv) {
    try {
        app_.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        output_.write(app_.help());
        return EXIT_AS_WISHED;
    } catch (const CLI::CallForVersion& version) {
        output_.write(std::string(version.what()) + '\n');
        return EXIT_AS_WISHED;
    } catch (const CLI::ParseError& error) {
        return endWith(EXIT_USAGE, std::string(error.what()) + "\nRun with --help for more information.");
    }
    return runChosen();
}

ExitCode CommandLine::runChosen() {
    for (const std::unique_ptr<Command>& command : commands_) {
        if (command->isChosen()) {
            return command->run(output_);
        }
    }
    throw UsageError("no command");
}

} // namespace Tools
} // namespace ZAV
