#include "check/Checks.h"
#include "check/Nearest.h"
#include "log/config/ValueReaders.h"
#include "zav-util/Conversions.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

using Log::ValueForm;

/// Checks the words of one value and reports the wrong ones.
class Words {
public:
    Words(const PropertyLine& line, const Log::ConfigurationKey& row, Findings& findings)
        : line_(line), row_(row), findings_(findings) {}

    void checkUnit(const std::string& word, bool isKnown, const std::string& counts) const;
    void checkValue(bool isKnown, const std::string& counts) const;
    void checkChoice(const std::string& counts) const;
    void checkPeriod() const;
    void checkEnd() const;

private:
    void warn(const std::string& id, const std::string& text) const { findings_.addWarning(line_, id, text); }

    const PropertyLine& line_;
    const Log::ConfigurationKey& row_;
    Findings& findings_;
};

void Words::checkUnit(const std::string& word, bool isKnown, const std::string& counts) const {
    if (!isKnown) {
        warn("unknown-unit",
             "unknown unit '" + word + "' counts as " + counts + question(nearWord(word, wordsOf(row_))));
    }
}

void Words::checkValue(bool isKnown, const std::string& counts) const {
    if (!isKnown) {
        warn("unknown-value", "unknown value '" + line_.value + "' counts as " + counts +
                                  question(nearWord(line_.value, wordsOf(row_))));
    }
}

/// Any word that is not in the table counts as the default.
void Words::checkChoice(const std::string& counts) const {
    const std::vector<std::string> words = wordsOf(row_);
    checkValue(std::find(words.begin(), words.end(), line_.value) != words.end(), counts);
}

void Words::checkPeriod() const {
    const std::vector<std::string> words = Util::split(line_.value, ' ');
    if (words.size() > 1) {
        checkUnit(words[1], Log::readPeriodUnit(words[1]).has_value(), "minutes");
    }
    checkEnd();
}

/// Reports words after a number and its unit, which are not read.
void Words::checkEnd() const {
    const std::vector<std::string> words = Util::split(line_.value, ' ');
    if (words.size() > 2) {
        warn("unknown-value", "'" + words[2] + "' and what follows it is not read");
    }
}

void checkWords(const PropertyLine& line, const Log::ConfigurationKey& row, Findings& findings) {
    const Words words(line, row, findings);
    switch (row.form) {
    case ValueForm::BOOLEAN:
        return words.checkValue(Log::readBoolean(line.value).has_value(),
                                std::string("'") + row.byDefault.text + "'");
    case ValueForm::STREAM:
    case ValueForm::OVERFLOW_RULE:
    case ValueForm::FLUSH_RULE:
        return words.checkChoice(std::string("'") + row.byDefault.text + "'");
    case ValueForm::FILE_MODE:
        return words.checkValue(Log::readFileMode(line.value).has_value(), row.byDefault.text);
    case ValueForm::SIZE_UNIT:
        return words.checkUnit(line.value, Log::readSizeUnit(line.value).has_value(), "bytes");
    case ValueForm::LIFETIME_UNIT:
        return words.checkUnit(line.value, Log::readLifetimeUnit(line.value).has_value(), "minutes");
    case ValueForm::PERIOD:
        return words.checkPeriod();
    case ValueForm::SIZE_LIMIT:
    case ValueForm::BYTE_SIZE:
    case ValueForm::TIME_LIMIT:
        return words.checkEnd();
    default:
        return;
    }
}

} // namespace

void checkMisreadWords(const Configuration& configuration, Findings& findings) {
    for (const PropertyLine& line : configuration.file().lines()) {
        if (const Log::ConfigurationKey* const row = configuration.settingInEffect(line.key)) {
            checkWords(line, *row, findings);
        }
    }
}

} // namespace Tools
} // namespace ZAV
