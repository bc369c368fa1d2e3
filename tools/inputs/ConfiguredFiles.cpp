#include "inputs/ConfiguredFiles.h"

#include "config/AppenderPlace.h"
#include "config/PropertySource.h"
#include "log/LogException.h"
#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"
#include "zav-util/Properties.h"

#include <algorithm>
#include <optional>

namespace ZAV {
namespace Tools {

namespace {

/// The appender's current layout. Lines of `json` are recognised in any case, since it may have had that
/// before.
/// \param byClass the default of the appender's class
LineForm formOf(const std::string& appenderName, const Util::Properties& properties, Layout byClass) {
    Log::AppenderValues values(appenderName);
    try {
        for (const char* const name : {Log::AppenderSetting::LAYOUT, Log::AppenderSetting::FIELDS}) {
            values.read(*Log::findKey(Log::KeySection::APPENDER, name), properties);
        }
    } catch (const Log::LogException&) {
        return byClass; // nothing was written with a value that is rejected
    }
    LineForm form(byClass);
    if (values.layout == Log::LayoutName::FIELDS) {
        form.columns = values.columns;
    }
    if (values.layout) {
        form.layout = values.layout == Log::LayoutName::PLAIN     ? Layout::PLAIN
                      : values.layout == Log::LayoutName::PROCESS ? Layout::PROCESS
                                                                  : Layout::UNKNOWN;
    }
    return form;
}

InputSpec inputAt(const std::string& appenderName, const Util::Properties& properties,
                  const AppenderPlace& place) {
    const bool isSeries = place.kind == AppenderPlace::SERIES;
    InputSpec input;
    input.path = place.folder + '/' + place.file;
    input.kind = isSeries ? InputSpec::SERIES : InputSpec::FILE;
    input.layout = formOf(appenderName, properties,
                          place.kind == AppenderPlace::SINGLE_FILE ? Layout::PROCESS : Layout::PLAIN);
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
        const InputSpec input = inputAt(*name, properties, place);
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
