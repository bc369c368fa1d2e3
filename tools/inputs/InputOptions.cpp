#include "inputs/InputOptions.h"

#include "Failure.h"
#include "UsageError.h"
#include "inputs/ConfiguredFiles.h"
#include "log/appenders/RolledFiles.h"
#include "zav-util/UtilException.h"

#include <algorithm>
#include <set>

namespace ZAV {
namespace Tools {

namespace {

const char* const STANDARD_INPUT = "-";

} // namespace

void InputOptions::addTo(CLI::App& command) {
    command
        .add_option("PATH", paths_,
                    "A log file, with those that were rolled away from it, the base name of a rotated series "
                    "(logs/server.log.), or - for standard input")
        ->type_name("");
    command
        .add_option("--config", configuration_,
                    "Read the files of all file appenders of a property file instead")
        ->type_name("FILE");
    command.add_option("--layout", layout_, "The layout of all files; otherwise each file shows its own")
        ->check(CLI::IsMember({"plain", "process"}))
        ->type_name("plain|process");
}

std::vector<InputSpec> InputOptions::inputs() const {
    if (paths_.empty() == configuration_.empty()) {
        throw UsageError("give either files to read or --config FILE");
    }
    std::vector<InputSpec> inputs = paths_.empty() ? inputsOfConfiguration() : inputsOfPaths();
    if (!layout_.empty()) {
        for (InputSpec& input : inputs) {
            input.layout = layout_ == "plain" ? Layout::PLAIN : Layout::PROCESS;
        }
    }
    return inputs;
}

std::vector<InputSpec> InputOptions::inputsOfPaths() const {
    std::vector<InputSpec> inputs;
    const std::set<std::string> named(paths_.begin(), paths_.end());
    for (const std::string& path : paths_) {
        if (named.count(Log::RolledFiles::livePathOf(path)) != 0) {
            continue; // as when a shell names all files of a folder
        }
        InputSpec input;
        input.path = path;
        input.mayBeLink = path.empty() || path.back() != '.'; // as the base name of a series ends
        input.kind = path == STANDARD_INPUT ? InputSpec::STANDARD_INPUT : InputSpec::FILE_OR_SERIES;
        inputs.push_back(input);
    }
    if (std::count(paths_.begin(), paths_.end(), STANDARD_INPUT) > 1) {
        throw UsageError("standard input can be read only once");
    }
    return inputs;
}

std::vector<InputSpec> InputOptions::inputsOfConfiguration() const {
    std::vector<InputSpec> inputs;
    try {
        inputs = configuredFiles(configuration_);
    } catch (const Util::UtilException& problem) {
        throw Failure(problem.what());
    }
    if (inputs.empty()) {
        throw Failure(configuration_ + ": declares no file appender");
    }
    return inputs;
}

} // namespace Tools
} // namespace ZAV
