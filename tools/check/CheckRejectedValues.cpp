#include "check/Checks.h"
#include "check/Nearest.h"
#include "config/InitTrial.h"
#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"

#include <exception>

namespace ZAV {
namespace Tools {

namespace {

using Log::ValueForm;

/// \return the id of the finding for a rejected value; nullptr for a form of which no value is rejected
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
    case ValueForm::BYTE_SIZE:
        return "bad-number";
    case ValueForm::SIZE_LIMIT:
    case ValueForm::TIME_LIMIT:
    case ValueForm::COUNT_LIMIT:
    case ValueForm::ROLL_MOMENT:
    case ValueForm::COMPRESSION:
        return "bad-value";
    default:
        return nullptr;
    }
}

/// \return what `init` says about one line; empty if nothing. No appender is made for this: it might already
///         find the program's files.
std::string errorFor(const Configuration& configuration, const PropertyLine& line,
                     const KeyMeaning& meaning) {
    Util::Properties trial;
    trial[line.key] = line.value;
    if (meaning.row->section != Log::KeySection::APPENDER) {
        return initError(trial);
    }
    if (meaning.row->requiredKey != nullptr) {
        trial[Log::appenderKey(meaning.owner, meaning.row->requiredKey)] = "AUDIT"; // all take a level
    }
    try {
        Log::AppenderValues values(meaning.owner);
        values.read(*meaning.row, trial);
        // The columns, if given, are checked on their own line.
        if (configuration.file().find(Log::appenderKey(meaning.owner, Log::AppenderSetting::FIELDS)) ==
            nullptr) {
            values.requireColumns();
        }
    } catch (const std::exception& problem) {
        return problem.what();
    }
    return std::string();
}

/// \return the word that was probably meant, as a question before the library's message; empty for numbers
std::string suggestion(const PropertyLine& line, const Log::ConfigurationKey& row) {
    const bool isWord = row.form == ValueForm::LEVEL || row.form == ValueForm::MESSAGE_TYPE ||
                        row.form == ValueForm::LAYOUT || row.form == ValueForm::ROLL_MOMENT ||
                        row.form == ValueForm::COMPRESSION;
    const std::string guess = isWord ? nearWord(line.value, wordsOf(row)) : std::string();
    return guess.empty() || guess == line.value ? "" : "did you mean '" + guess + "'? ";
}

} // namespace

void checkRejectedValues(const Configuration& configuration, Findings& findings) {
    for (const PropertyLine& line : configuration.file().lines()) {
        const KeyMeaning meaning = configuration.meaningOf(line.key);
        const char* const id = meaning.kind == KeyMeaning::SETTING ? idOf(meaning.row->form) : nullptr;
        // The dispatcher also reads keys that have no effect.
        const bool isRead = id != nullptr && (meaning.row->section == Log::KeySection::DISPATCHER ||
                                              configuration.missingPartner(meaning) == nullptr);
        if (!isRead) {
            continue;
        }
        const std::string complaint = errorFor(configuration, line, meaning);
        if (!complaint.empty()) {
            findings.addError(line, id, suggestion(line, *meaning.row) + complaint);
        }
    }
}

} // namespace Tools
} // namespace ZAV
