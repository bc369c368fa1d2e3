#include "CommandLine.h"

#include "check/Nearest.h"
#include "help/HelpFormatter.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

/// Keeps CLI11 from interpreting words that are meant literally: it takes "[a,b]" for a list, and every word
/// with a dash for an option, also in the argument of `ctl ADDRESS command NAME`.
namespace VerbatimWords {

constexpr char MARK = '\x01';

bool looksLikeList(const std::string& word) {
    return !word.empty() && word.front() == '[' && word.back() == ']';
}

bool looksMarked(const std::string& word) {
    return !word.empty() && word.front() == MARK;
}

/// \param words with the program's name
/// \return the index of the first word that is an argument for a command's listeners; the number of words if there is
///         none
std::size_t firstArgumentOfCommand(const std::vector<std::string>& words) {
    std::size_t address = 2;
    while (address < words.size() && words[address].compare(0, 2, "--") == 0) {
        const bool hasValue = words[address].find('=') != std::string::npos || words[address] == "--help";
        address += hasValue ? 1 : 2; // all options of ctl take a value
    }
    const bool isCommand = words.size() > address + 1 && words[1] == "ctl" && words[address + 1] == "command";
    return isCommand ? address + 3 : words.size();
}

/// \return the word, with a mark before it, or before the value in "--option=value", if that would be misread
std::string markedWhereMisread(const std::string& word) {
    const bool isOption = word.compare(0, 2, "--") == 0;
    const std::size_t value = isOption ? word.find('=') + 1 : 0; // 0 also without a value
    const std::string text = word.substr(value);
    return looksLikeList(text) || looksMarked(text) ? word.substr(0, value) + MARK + text : word;
}

std::string withoutMark(const std::string& word) {
    return looksMarked(word) ? word.substr(1) : word;
}

/// \return the words after the program's name, in reverse order as CLI11 expects them, with a mark on those that it
///         would misread
std::vector<std::string> marked(int argc, const char* const* argv) {
    const std::vector<std::string> words(argv, argv + argc);
    const std::size_t firstArgument = firstArgumentOfCommand(words);
    std::vector<std::string> result;
    for (std::size_t number = words.size() - 1; number > 0; --number) {
        const std::string& word = words[number];
        result.push_back(number >= firstArgument ? MARK + word : markedWhereMisread(word));
    }
    return result;
}

/// Makes all options of all commands remove the mark.
void acceptMarked(CLI::App& program) {
    for (CLI::App* const command : program.get_subcommands({})) {
        for (CLI::Option* const option : command->get_options()) {
            if (option->get_items_expected_max() > 0) {
                option->transform(withoutMark);
            }
        }
    }
}

} // namespace VerbatimWords

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
