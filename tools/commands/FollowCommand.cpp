#include "commands/FollowCommand.h"

#include "follow/Follower.h"

#include <charconv>
#include <string>
#include <system_error>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

std::size_t readCount(const std::string& text) {
    std::size_t count = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, count);
    if (result.ec != std::errc() || result.ptr != end) {
        throw CLI::ValidationError("--lines", "'" + text + "' is no number of records");
    }
    return count;
}

} // namespace

FollowCommand::FollowCommand(CLI::App& program)
    : Command(*program.add_subcommand("follow",
                                      "Show the last records of log files, and what is added to them")) {
    inputs_.addTo(command_);
    command_
        .add_option_function<std::string>(
            "--lines", [this](const std::string& text) { lines_ = readCount(text); },
            "How many of the last records to begin with; " + std::to_string(DEFAULT_LINES) + " unless told")
        ->type_name("N");
    command_.add_flag("--from-start", fromStart_, "Begin with all records");
    stateOption_ = command_.add_option("--state", state_,
                                       "Keep the place in this file, and go on from there at the next start");
    stateOption_->type_name("FILE");
    filters_.addTo(command_);
    printing_.addTo(command_);
}

ExitCode FollowCommand::run(Output& output) {
    printing_.useZone();
    const RecordFilter filter = filters_.filter();
    const std::unique_ptr<Printer> printer = printing_.printer();
    const std::vector<InputSpec> inputs = inputs_.inputs(); // signals still end the process here
    Follower follower(filter, *printer, output);
    for (const InputSpec& input : inputs) {
        follower.addInput(input);
    }
    if (!fromStart_) {
        follower.showLast(lines_);
    }
    if (stateOption_->count() > 0) {
        follower.keepState(state_);
    }
    follower.run();
    return EXIT_AS_WISHED;
}

} // namespace Tools
} // namespace ZAV
