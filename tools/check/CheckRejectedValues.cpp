#include "check/Checks.h"
#include "check/KeyTable.h"
#include "check/Nearest.h"
#include "config/InitTrial.h"
#include "log/config/KeyNames.h"

namespace ZAV {
namespace Tools {

namespace {

using Log::ValueForm;

/// \return the name of the finding for a value that is rejected; nullptr for a form of which no value is
const char* idOf(ValueForm form) {
    switch (form) {
    case ValueForm::LEVEL:
        return "bad-level";
    case ValueForm::MESSAGE_TYPE:
        return "bad-message-type";
    case ValueForm::PERIOD:
        return "bad-expiration";
    case ValueForm::LAYOUT:
    case ValueForm::COLUMNS:
        return "bad-layout";
    case ValueForm::WHOLE_NUMBER:
        return "bad-number";
    default:
        return nullptr;
    }
}

/// \return a configuration that gives `init` nothing to complain about but one line
Util::Properties trialOf(const Configuration& configuration, const PropertyLine& line,
                         const KeyMeaning& meaning) {
    Util::Properties trial;
    if (meaning.row->section == Log::KeySection::APPENDER) {
        const DeclaredAppender& appender = *configuration.findAppender(meaning.owner);
        trial[Log::appenderKey(appender.name)] =
            appender.reader != 0 ? appender.className : Log::AppenderClass::FILE_SERIES;
        trial[Log::appenderKey(appender.name, Log::AppenderSetting::LEVEL)] = "AUDIT";
        trial[Log::appenderKey(appender.name, Log::AppenderSetting::LAYOUT)] = "plain";
        if (configuration.setting(appender, Log::AppenderSetting::FIELDS) != nullptr) {
            // What it names is the matter of its own line.
            trial[Log::appenderKey(appender.name, Log::AppenderSetting::FIELDS)] = "text";
        }
    }
    trial[line.key] = line.value;
    return trial;
}

/// \return the word that was probably meant, as a question before the library's own words; empty for numbers
std::string suggestion(const PropertyLine& line, const Log::ConfigurationKey& row) {
    const bool isWord =
        row.form == ValueForm::LEVEL || row.form == ValueForm::MESSAGE_TYPE || row.form == ValueForm::LAYOUT;
    const std::string guess = isWord ? nearWord(line.value, wordsOf(row)) : std::string();
    return guess.empty() ? guess : "did you mean '" + guess + "'? ";
}

} // namespace

void checkRejectedValues(const Configuration& configuration, Findings& findings) {
    for (const PropertyLine& line : configuration.file().lines()) {
        const KeyMeaning meaning = configuration.meaningOf(line.key);
        const char* const id = meaning.kind == KeyMeaning::SETTING ? idOf(meaning.row->form) : nullptr;
        if (id == nullptr || configuration.missingPartner(meaning) != nullptr) {
            continue;
        }
        const std::string complaint = complaintOfInit(trialOf(configuration, line, meaning));
        if (!complaint.empty()) {
            findings.addError(line, id, suggestion(line, *meaning.row) + complaint);
        }
    }
}

} // namespace Tools
} // namespace ZAV
