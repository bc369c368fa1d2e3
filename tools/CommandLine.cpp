#include "CommandLine.h"

#include "Outcome.h"
#include "check/Nearest.h"
#include "help/HelpFormatter.h"
#include "options/VerbatimWords.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

const char* const EXIT_STATUS = "exit status:\n"
                                "  0  success\n"
                                "  1  something was found, is missing or was refused\n"
                                "  2  wrong usage";

ExitCode endWith(ExitCode code, const std::string& text) {
    reportError(text);
    return code;
}

} // namespace

CommandLine::CommandLine()
    : app_("Read, check and steer what the logging library ZAV Log writes", "zav-log") {
    app_.formatter(std::make_shared<HelpFormatter>());
    app_.footer(EXIT_STATUS);
    app_.set_version_flag("--version", "zav-log " ZAV_LOG_VERSION);
    app_.require_subcommand(1);
    // In the order in which --help shows them.
    commands_.push_back(makeCheckCommand(app_));
    commands_.push_back(makeExplainCommand(app_));
    commands_.push_back(makeCatCommand(app_));
    commands_.push_back(makeFollowCommand(app_));
    commands_.push_back(makeCtlCommand(app_));
    commands_.push_back(makeRecoverCommand(app_));
    VerbatimWords::acceptMarked(app_);
}

ExitCode CommandLine::run(int argc, const char* const* argv) {
    try {
        const ExitCode code = parseAndRun(argc, argv);
        output_.flush();
        return code;
    } catch (const OutputClosed&) {
        return EXIT_OK;
    } catch (const UsageError& error) {
        return endWith(EXIT_USAGE, error.what());
    } catch (const std::exception& error) {
        return endWith(EXIT_PROBLEM, error.what());
    }
}

ExitCode CommandLine::parseAndRun(int argc, const char* const* argv) {
    try {
        checkThatCommandExists(argc, argv);
        app_.parse(VerbatimWords::marked(argc, argv));
    } catch (const CLI::CallForHelp&) {
        output_.write(app_.help());
        return EXIT_OK;
    } catch (const CLI::CallForVersion& version) {
        output_.write(std::string(version.what()) + '\n');
        return EXIT_OK;
    } catch (const CLI::ParseError& error) {
        return endWith(EXIT_USAGE, std::string(error.what()) + "\nRun with --help for more information.");
    }
    return runChosen();
}

/// \throw UsageError
void CommandLine::checkThatCommandExists(int argc, const char* const* argv) const {
    const std::string word = argc > 1 ? argv[1] : "";
    std::vector<std::string> names;
    for (const CLI::App* const command : app_.get_subcommands({})) {
        names.push_back(command->get_name());
    }
    const bool isOption = !word.empty() && word.front() == '-';
    if (isOption && app_.get_option_no_throw(word) == nullptr) {
        throw UsageError("there is no option '" + word + "'");
    }
    if (!word.empty() && !isOption && std::find(names.begin(), names.end(), word) == names.end()) {
        throw UsageError("there is no command '" + word + "'" + question(nearWord(word, names)));
    }
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
