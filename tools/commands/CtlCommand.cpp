#include "commands/CtlCommand.h"

#include "UsageError.h"
#include "control/ControlRequest.h"
#include "control/LineBuffer.h"
#include "ctl/ControlClient.h"

#include <iostream>
#include <stdexcept>

namespace ZAV {
namespace Tools {

namespace {

const char* const REQUESTS =
    "requests:\n"
    "  loggers                    name, level and minutes of expiration of every logger\n"
    "  level LOGGER LEVEL         set the level of a logger and of all below it, and lower\n"
    "                             the dynamic levels of the appenders for their time\n"
    "  expiration LOGGER MINUTES  how long a level below WARNING lasts; 0 for ever\n"
    "  command NAME [ARGUMENT]    issue a command\n"
    "  statistics                 the library's counters\n"
    "  flush                      wait until all that is queued is written";

/// What was given as one argument must arrive as one.
void checkThatNameIsWhole(const Log::ControlRequest& request, const std::vector<std::string>& words) {
    const bool hasName = words.size() > 1;
    if (hasName && request.name() != words[1]) {
        throw UsageError("too many arguments, or blanks where there can be none, in '" + words[0] + "'");
    }
}

} // namespace

CtlCommand::CtlCommand(CLI::App& program)
    : Command(*program.add_subcommand("ctl", "Ask a running program that has opened a control server")) {
    command_.add_option("ADDRESS", address_, "path of its socket; on Windows, name of its pipe")->required();
    command_.add_option("REQUEST", request_, "what to ask, with its arguments")->required();
    command_.footer(std::string(REQUESTS) + "\n\n" + program.get_footer());
}

ExitCode CtlCommand::run(Output& output) {
    const std::string line = requestLine();
    const ControlClient::Answer answer = ControlClient(address_).ask(line);
    if (!answer.refusal.empty()) {
        std::cerr << answer.refusal << '\n';
        return EXIT_COMPLAINT;
    }
    for (const std::string& answered : answer.lines) {
        output.write(answered + '\n');
    }
    return EXIT_AS_WISHED;
}

/// \throw UsageError if the server would not understand the request, or would take it for several ones
std::string CtlCommand::requestLine() const {
    std::string line;
    for (const std::string& word : request_) {
        line += (line.empty() ? "" : " ") + word;
    }
    if (line.size() > Log::LineBuffer::MAX_LENGTH || line.find_first_of("\r\n") != std::string::npos) {
        throw UsageError("a request is one line of at most " + std::to_string(Log::LineBuffer::MAX_LENGTH) +
                         " bytes");
    }
    try {
        checkThatNameIsWhole(Log::ControlRequest::parse(line), request_);
    } catch (const std::invalid_argument& error) {
        throw UsageError(error.what());
    }
    return line;
}

} // namespace Tools
} // namespace ZAV
