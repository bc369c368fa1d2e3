#include "inputs/ConfiguredFiles.h"

#include "config/AppenderPlace.h"
#include "config/PropertySource.h"
#include "log/config/KeyNames.h"
#include "zav-util/Properties.h"

#include <algorithm>
#include <optional>

namespace ZAV {
namespace Tools {

namespace {

InputSpec inputAt(const AppenderPlace& place) {
    const bool isSeries = place.kind == AppenderPlace::SERIES;
    InputSpec input;
    input.path = place.folder + '/' + place.file;
    input.kind = isSeries ? InputSpec::SERIES : InputSpec::FILE;
    input.layout = place.kind == AppenderPlace::SINGLE_FILE ? Layout::PROCESS : Layout::PLAIN;
    input.mayBeMissing = true;
    return input;
}

} // namespace

std::vector<InputSpec> configuredFiles(const std::string& propertyFile) {
    const Util::Properties properties = readProperties(propertyFile);
    std::vector<InputSpec> inputs;
    for (const std::string& key : properties.getKeys()) {
        const std::optional<std::string> name = Log::declaredAppender(key);
        if (!name) {
            continue;
        }
        const AppenderPlace place(*name, properties);
        if (place.kind == AppenderPlace::NO_FILE) {
            continue;
        }
        const InputSpec input = inputAt(place);
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
