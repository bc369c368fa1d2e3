#include "commands/Command.h"

#include "filters/FilterOptions.h"
#include "inputs/InputOptions.h"
#include "inputs/LogFiles.h"
#include "printers/PrintOptions.h"
#include "printers/RecordPresenter.h"
#include "records/Merger.h"

#include <cstddef>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

/// `zav-log cat`: merges log files and shows them as one log.
class CatCommand : public Command {
public:
    explicit CatCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    InputOptions inputs_;
    FilterOptions filters_;
    PrintOptions printing_;
};

/// \return false if some inputs cannot be read; each of them is reported on standard error
bool openStreams(const std::vector<InputSpec>& inputs, std::deque<RecordStream>& streams) {
    std::vector<std::string> problems;
    for (const InputSpec& input : inputs) {
        RecordStream& stream = streams.emplace_back();
        for (LogFile& file : openAll(input, problems)) {
            stream.append(std::move(file));
        }
    }
    for (const std::string& problem : problems) {
        reportError(problem);
    }
    return problems.empty();
}

Merger mergerOf(std::deque<RecordStream>& streams) {
    std::vector<RecordStream*> pointers;
    for (RecordStream& stream : streams) {
        pointers.push_back(&stream);
    }
    return Merger(pointers, RecordStream::Ending::FINAL);
}

void showAll(std::deque<RecordStream>& streams, RecordPresenter& presenter, Output& output) {
    Merger merger = mergerOf(streams);
    for (int next = merger.next(); next >= 0; next = merger.next()) {
        const auto input = static_cast<std::size_t>(next);
        output.write(presenter.show(input, streams[input]));
    }
    output.write(presenter.release());
    output.write(presenter.end());
}

CatCommand::CatCommand(CLI::App& program)
    : Command(*program.add_subcommand("cat", "Merge log files into one log, in the order of time")) {
    inputs_.addTo(command_);
    filters_.addTo(command_);
    printing_.addTo(command_);
    printing_.addEndTo(command_);
    command_.footer(std::string(InputOptions::ORDER_OF_RECORDS) + "\n\n" + program.get_footer());
}

ExitCode CatCommand::run(Output& output) {
    printing_.useZone();
    const RecordFilter filter = filters_.filter();
    const std::unique_ptr<Printer> printer = printing_.printer();
    std::deque<RecordStream> streams;
    bool isComplete = openStreams(inputs_.inputs(), streams);
    RecordPresenter presenter(filter, *printer, streams.size());
    printing_.applyTo(presenter);
    showAll(streams, presenter, output);
    std::vector<std::string> problems = {filter.problem(), presenter.problem()};
    for (RecordStream& stream : streams) {
        problems.push_back(stream.takeProblem());
    }
    for (const std::string& problem : problems) {
        if (!problem.empty()) {
            reportError(problem);
            isComplete = false;
        }
    }
    return isComplete ? EXIT_OK : EXIT_PROBLEM;
}

} // namespace

std::unique_ptr<Command> makeCatCommand(CLI::App& program) {
    return std::make_unique<CatCommand>(program);
}

} // namespace Tools
} // namespace ZAV
