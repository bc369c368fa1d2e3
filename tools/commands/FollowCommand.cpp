#include "commands/Command.h"

#include "filters/FilterOptions.h"
#include "follow/Follower.h"
#include "inputs/InputOptions.h"
#include "options/RecordCount.h"
#include "printers/PrintOptions.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

/// `zav-log follow`: shows the records of log files, and new ones as the files grow.
class FollowCommand : public Command {
public:
    explicit FollowCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    static constexpr std::size_t DEFAULT_LINES = 10;

    InputOptions inputs_;
    FilterOptions filters_;
    PrintOptions printing_;
    std::size_t lines_ = DEFAULT_LINES;
    bool fromStart_ = false;
    std::string state_;
    CLI::Option* linesOption_ = nullptr;
    CLI::Option* stateOption_ = nullptr;
};

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
    command_.footer(std::string(InputOptions::ORDER_OF_RECORDS) + "\n\n" + program.get_footer());
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

} // namespace

std::unique_ptr<Command> makeFollowCommand(CLI::App& program) {
    return std::make_unique<FollowCommand>(program);
}

} // namespace Tools
} // namespace ZAV
