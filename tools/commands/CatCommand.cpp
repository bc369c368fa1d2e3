#include "commands/CatCommand.h"

#include "inputs/LogFiles.h"
#include "records/Merger.h"

#include <cstddef>
#include <deque>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

void report(const std::string& problem) {
    std::cerr << "zav-log: " << problem << '\n';
}

/// \return false, after a word on standard error for each, if some inputs cannot be read
bool openStreams(const std::vector<InputSpec>& inputs, std::deque<RecordStream>& streams) {
    std::vector<std::string> problems;
    for (const InputSpec& input : inputs) {
        RecordStream& stream = streams.emplace_back();
        for (LogFile& file : openAll(input, problems)) {
            stream.append(std::move(file));
        }
    }
    for (const std::string& problem : problems) {
        report(problem);
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

void showAll(std::deque<RecordStream>& streams, const RecordFilter& filter, Printer& printer,
             Output& output) {
    std::vector<char> wanted(streams.size(), 0);
    std::string text;
    Merger merger = mergerOf(streams);
    for (int next = merger.next(); next >= 0; next = merger.next()) {
        const auto input = static_cast<std::size_t>(next);
        RecordStream& stream = streams[input];
        printer.observe(input, stream);
        if (!stream.record().isContinuation) {
            wanted[input] = filter.accepts(stream);
        }
        if (wanted[input]) {
            text.clear();
            printer.print(input, stream, text);
            output.write(text);
        }
    }
    text.clear();
    printer.printEnd(text);
    output.write(text);
}

} // namespace

CatCommand::CatCommand(CLI::App& program)
    : command_(*program.add_subcommand("cat", "Show what log files hold as one log, in the order of time")) {
    inputs_.addTo(command_);
    filters_.addTo(command_);
    printing_.addTo(command_);
    printing_.addCountTo(command_);
}

bool CatCommand::isChosen() const {
    return command_.parsed();
}

ExitCode CatCommand::run(Output& output) {
    printing_.useZone();
    const RecordFilter filter = filters_.filter();
    const std::unique_ptr<Printer> printer = printing_.printer();
    std::deque<RecordStream> streams;
    bool isComplete = openStreams(inputs_.inputs(), streams);
    showAll(streams, filter, *printer, output);
    std::vector<std::string> problems = {filter.problem()};
    for (RecordStream& stream : streams) {
        problems.push_back(stream.takeProblem());
    }
    for (const std::string& problem : problems) {
        if (!problem.empty()) {
            report(problem);
            isComplete = false;
        }
    }
    return isComplete ? EXIT_AS_WISHED : EXIT_COMPLAINT;
}

} // namespace Tools
} // namespace ZAV
