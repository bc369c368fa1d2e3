#include "commands/FollowCommand.h"

#include "Outcome.h"
#include "commands/OrderOfRecords.h"
#include "follow/Follower.h"
#include "options/RecordCount.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

FollowCommand::FollowCommand(CLI::App& program)
    : Command(*program.add_subcommand("follow",
                                      "Show the last records of log files, and what is added to them")) {
    inputs_.addTo(command_);
    linesOption_ =
        addRecordCount(command_, "--lines", lines_,
                       "How many of the last records to begin with; " + std::to_string(DEFAULT_LINES) +
                           " unless told, and all at the first start with --state");
    command_.add_flag("--from-start", fromStart_, "Begin with all records");
    stateOption_ = command_.add_option("--state", state_,
                                       "Keep the place in this file, and go on from there at the next start");
    stateOption_->type_name("FILE");
    filters_.addTo(command_);
    printing_.addTo(command_);
    command_.footer(std::string(ORDER_OF_RECORDS) + "\n\n" + program.get_footer());
}

ExitCode FollowCommand::run(Output& output) {
    printing_.useZone();
    const RecordFilter filter = filters_.filter();
    const std::unique_ptr<Printer> printer = printing_.printer();
    const std::vector<InputSpec> inputs = inputs_.inputs(); // signals still end the process here
    const bool keepsState = stateOption_->count() > 0;
    const bool hasStandardInput = std::any_of(inputs.begin(), inputs.end(), [](const InputSpec& input) {
        return input.kind == InputSpec::STANDARD_INPUT;
    });
    if (keepsState && hasStandardInput) {
        throw UsageError("--state cannot keep a place in standard input");
    }
    Follower follower(filter, *printer, inputs, output);
    printing_.applyTo(follower.presenter());
    if (!fromStart_ && (!keepsState || linesOption_->count() > 0)) {
        follower.showLast(lines_);
    }
    if (keepsState) {
        follower.keepState(state_);
    }
    follower.run();
    return EXIT_OK;
}

} // namespace Tools
} // namespace ZAV
