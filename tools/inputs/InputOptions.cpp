#include "inputs/InputOptions.h"

#include "Outcome.h"
#include "config/Appenders.h"
#include "config/PropertyFile.h"
#include "log/LogException.h"
#include "log/appenders/RolledFiles.h"
#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/ValueReaders.h"
#include "zav-util/Properties.h"
#include "zav-util/UtilException.h"

#include <algorithm>
#include <set>

namespace ZAV {
namespace Tools {

namespace {

const char* const STANDARD_INPUT = "-";

std::string namesOfColumns() {
    std::string names;
    for (const std::string_view name : Log::columnNames()) {
        names.append(names.empty() ? "" : " ").append(name);
    }
    return names;
}

/// \return whether a path is read along with another one, as when a shell expands a pattern to all files of a folder
bool isReadWithAnother(const std::string& path, const std::set<std::string>& named) {
    const std::string plain = Log::RolledFiles::plainPathOf(path);
    const std::string packed = plain + Log::RolledFiles::PACKED;
    return !plain.empty() && (named.count(Log::RolledFiles::livePathOf(path)) != 0 ||
                              (path != plain && named.count(plain) != 0) ||
                              (path != plain && path != packed && named.count(packed) != 0));
}

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

/// \return the files of all file appenders of a property file, in the order of the appenders' names; a file that two of
///         them share comes once
/// \throw Util::UtilException if the property file cannot be read
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
    CLI::Option* const layoutOption = command.add_option(
        "--layout", layout_, "The layout of all files; otherwise each file shows its own, json too");
    layoutOption->check(CLI::IsMember({"plain", "process"}))->type_name("plain|process");
    fieldsOption_ = command.add_option(
        "--fields", fields_,
        "The columns of all files of the layout fields, as in their property file: \"utc level text\"");
    fieldsOption_->excludes(layoutOption)->type_name("NAMES");
}

std::vector<InputSpec> InputOptions::inputs() const {
    if (paths_.empty() == configuration_.empty()) {
        throw UsageError("give either files to read or --config FILE");
    }
    const std::optional<LineForm> form = givenForm();
    std::vector<InputSpec> inputs = paths_.empty() ? inputsOfConfiguration() : inputsOfPaths();
    if (form) {
        for (InputSpec& input : inputs) {
            input.layout = *form;
        }
    }
    return inputs;
}

/// \return the form that the command line sets for all files; nothing if it sets none
std::optional<LineForm> InputOptions::givenForm() const {
    LineForm form;
    if (fieldsOption_->count() > 0) {
        try {
            form.columns = Log::readColumns(fields_);
        } catch (const Util::UtilException&) {
            throw UsageError("--fields: '" + fields_ + "' are no columns: name some of " + namesOfColumns());
        }
        return form;
    }
    if (layout_.empty()) {
        return std::nullopt;
    }
    form.layout = layout_ == "plain" ? Layout::PLAIN : Layout::PROCESS;
    form.hasJson = false;
    return form;
}

std::vector<InputSpec> InputOptions::inputsOfPaths() const {
    std::vector<InputSpec> inputs;
    const std::set<std::string> named(paths_.begin(), paths_.end());
    for (const std::string& path : paths_) {
        if (isReadWithAnother(path, named)) {
            continue;
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
