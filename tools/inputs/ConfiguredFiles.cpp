#include "inputs/ConfiguredFiles.h"

#include "zav-util/Properties.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

const std::string PREFIX = "appender.";

/// \return false if the appender writes no files
bool describe(const Util::Properties& properties, const std::string& name, const std::string& className,
              InputSpec& input) {
    if (className != "FileAppender" && className != "SimpleFileAppender") {
        return false;
    }
    std::string folder = ".";
    std::string file = name;
    properties.getProperty(PREFIX + name + ".dir", folder);
    properties.getProperty(PREFIX + name + ".file", file);
    const bool isSeries = className == "FileAppender";
    input.path = folder + '/' + file;
    input.kind = isSeries ? InputSpec::SERIES : InputSpec::FILE;
    input.layout = isSeries ? Layout::PLAIN : Layout::PROCESS;
    input.mayBeMissing = true;
    return true;
}

} // namespace

std::vector<InputSpec> configuredFiles(const std::string& propertyFile) {
    const Util::Properties properties(propertyFile);
    std::vector<InputSpec> inputs;
    for (const auto& [key, value] : properties) {
        const std::string name = key.substr(std::min(PREFIX.size(), key.size()));
        const bool declaresAppender = key == PREFIX + name && name.find('.') == std::string::npos;
        InputSpec input;
        if (!declaresAppender || !describe(properties, name, value, input)) {
            continue;
        }
        const bool isKnown = std::any_of(inputs.begin(), inputs.end(), [&input](const InputSpec& other) {
            return other.path == input.path && other.kind == input.kind;
        });
        if (!isKnown) {
            inputs.push_back(input);
        }
    }
    return inputs;
}

} // namespace Tools
} // namespace ZAV
