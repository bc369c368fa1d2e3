#include "commands/Command.h"

#include "Outcome.h"
#include "control/ControlRequest.h"
#include "ctl/ControlClient.h"
#include "options/ColorOption.h"
#include "options/LevelName.h"
#include "terminal/Paint.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

/// `zav-log ctl`: sends one request to a running program and shows its answer.
class CtlCommand : public Command {
public:
    explicit CtlCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    std::vector<std::string> requestWords() const;
    std::string requestLine() const;
    std::string refusalText(const std::string& refusal) const;
    void show(const std::string& lines, Output& output) const;

    std::string address_;
    std::vector<std::string> request_; ///< with its arguments
    std::string duration_;
    CLI::Option* durationOption_ = nullptr;
    ColorOption color_;
};

const char* const REQUESTS =
    "requests:\n"
    "  loggers                    name, level and minutes of expiration of every logger\n"
    "  appenders                  name, class, sync or async, level now and for how many\n"
    "                             seconds more, of every appender\n"
    "  level LOGGER LEVEL         set the level of a logger and of all below it, and lower\n"
    "                             the dynamic levels of the appenders for their time; with\n"
    "                             --for TIME the level of the logger and of all appenders,\n"
    "                             which then go back by themselves\n"
    "  expiration LOGGER MINUTES  how long a level below WARNING lasts; 0 for ever\n"
    "  command NAME [ARGUMENT]    issue a command\n"
    "  statistics                 the library's counters\n"
    "  flush                      wait until all that is queued is written\n"
    "  reload [FILE]              change to the configuration of its file, or of another, which\n"
    "                             is read by the program, from the folder that it is in";

/// Longer than a server's timeout for silent clients, for whom a new one may have to wait, plus that for the
/// queue.
constexpr std::chrono::seconds FLUSH_LIMIT(45);

/// \return the line with its level, the last word but one, in the colour of that level's messages
std::string withPaintedLevel(const std::string& line) {
    const std::size_t end = line.find_last_of(' ');
    const std::size_t begin = end == 0 || end == std::string::npos ? 0 : line.find_last_of(' ', end - 1) + 1;
    const std::string word = line.substr(begin, end - begin);
    const std::optional<Log::Level::LogLevel> level = findLevel(word);
    if (!level || paintOf(*level) == Paint::PLAIN) {
        return line;
    }
    return line.substr(0, begin) + painted(paintOf(*level), word) + line.substr(begin + word.size());
}

/// A name given as one argument must arrive as one.
void checkThatNameIsWhole(const Log::ControlRequest& request, const std::vector<std::string>& words) {
    const bool hasName = words.size() > 1;
    if (hasName && words[1].empty()) {
        throw UsageError("an empty name in '" + words[0] + "'");
    }
    if (hasName && request.name() != words[1]) {
        throw UsageError("too many arguments, or blanks where there can be none, in '" + words[0] + "'");
    }
}

CtlCommand::CtlCommand(CLI::App& program)
    : Command(*program.add_subcommand("ctl", "Ask a running program that has opened a control server")) {
    command_.add_option("ADDRESS", address_, "path of its socket; on Windows, name of its pipe")->required();
    command_.add_option("REQUEST", request_, "what to ask, with its arguments")->required();
    durationOption_ =
        command_.add_option("--for", duration_,
                            "With the request level: how long it lasts (90sec, 10min, 2h); 0sec "
                            "ends one");
    durationOption_->type_name("TIME");
    color_.addTo(command_);
    command_.footer(std::string(REQUESTS) + "\n\n" + program.get_footer());
}

ExitCode CtlCommand::run(Output& output) {
    const std::string line = requestLine();
    const bool isFlush = request_[0] == "flush";
    const bool isCommand = request_[0] == "command";
    ControlClient client(address_, isFlush ? FLUSH_LIMIT : ControlClient::USUAL_LIMIT);
    const ControlClient::Answer answer = client.ask(line);
    if (!answer.refusal.empty()) {
        std::cerr << refusalText(answer.refusal) << '\n';
        return EXIT_PROBLEM;
    }
    if (isCommand && !answer.lines.empty()) {
        reportError(answer.lines.substr(0, answer.lines.size() - 1)); // a remark on the command, no answer
    } else {
        show(answer.lines, output);
    }
    return EXIT_OK;
}

void CtlCommand::show(const std::string& lines, Output& output) const {
    if (!color_.isOn()) {
        output.write(lines);
        return;
    }
    for (std::size_t begin = 0; begin < lines.size();) {
        const std::size_t end = lines.find('\n', begin);
        output.write(withPaintedLevel(lines.substr(begin, end - begin)) + '\n');
        begin = end + 1;
    }
}

/// \return the request's words as the server expects them
std::vector<std::string> CtlCommand::requestWords() const {
    std::vector<std::string> words = request_;
    if (words[0] == "level" && words.size() > 2) {
        words[2] = levelName(words[2]);
    }
    if (durationOption_->count() > 0) {
        if (words[0] != "level") {
            throw UsageError("only the request level has a --for");
        }
        std::string duration = duration_;
        duration.erase(std::remove(duration.begin(), duration.end(), ' '), duration.end());
        words.insert(words.end(), {"for", duration});
    }
    return words;
}

/// \throw UsageError if the server would not understand the request, or would read it as several
std::string CtlCommand::requestLine() const {
    const std::vector<std::string> words = requestWords();
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    if (line.size() > Log::LineBuffer::MAX_LENGTH || line.find_first_of("\r\n") != std::string::npos) {
        throw UsageError("a request is one line of at most " + std::to_string(Log::LineBuffer::MAX_LENGTH) +
                         " bytes");
    }
    try {
        const Log::ControlRequest request = Log::ControlRequest::parse(line);
        if (durationOption_->count() > 0 && request.kind() != Log::ControlRequest::LEVEL_FOR) {
            throw UsageError("'" + duration_ + "' is no time, which is 90sec, 10min or 2h, for example");
        }
        checkThatNameIsWhole(request, words);
    } catch (const std::invalid_argument& error) {
        throw UsageError(error.what());
    }
    return line;
}

std::string CtlCommand::refusalText(const std::string& refusal) const {
    const bool isBadLevel = request_[0] == "level" && request_.size() > 2 &&
                            refusal == "There is no '" + levelName(request_[2]) + "' LogLevel defined.";
    return isBadLevel ? refusal + ' ' + LIST_OF_LEVELS : refusal;
}

} // namespace

std::unique_ptr<Command> makeCtlCommand(CLI::App& program) {
    return std::make_unique<CtlCommand>(program);
}

} // namespace Tools
} // namespace ZAV
