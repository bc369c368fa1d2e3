#include "check/Checks.h"
#include "check/Nearest.h"
#include "log/config/ConfigurationKeys.h"

#include <cstddef>
#include <set>

namespace ZAV {
namespace Tools {

namespace {

/// All keys that something would read, for the names in the file and for those in the unknown key itself.
class ReadKeys {
public:
    ReadKeys(const Configuration& configuration, const std::string& unknownKey);
    const std::vector<std::string>& all() const { return keys_; }

private:
    void addAppenderKeys(const Log::ConfigurationKey& row, const Configuration& configuration);
    void addLoggerKeys(const Log::ConfigurationKey& row, const Configuration& configuration,
                       const std::string& unknownKey);

    std::vector<std::string> keys_;
};

ReadKeys::ReadKeys(const Configuration& configuration, const std::string& unknownKey) {
    for (const Log::ConfigurationKey& row : Log::configurationKeys()) {
        if (row.section == Log::KeySection::APPENDER) {
            addAppenderKeys(row, configuration);
        } else if (row.section == Log::KeySection::LOGGER) {
            addLoggerKeys(row, configuration, unknownKey);
        } else {
            keys_.push_back(Log::dispatcherKey(row.name));
        }
    }
}

void ReadKeys::addAppenderKeys(const Log::ConfigurationKey& row, const Configuration& configuration) {
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const bool isRead = appender.reader == 0 || (row.readers & appender.reader) != 0;
        const bool isDeclaration = row.name[0] == '\0';
        if (isRead && !isDeclaration) {
            keys_.push_back(Log::appenderKey(appender.name, row.name));
        }
    }
}

void ReadKeys::addLoggerKeys(const Log::ConfigurationKey& row, const Configuration& configuration,
                             const std::string& unknownKey) {
    const std::string prefix = Log::LOGGER_KEY_PREFIX;
    for (const auto& [name, line] : configuration.loggers()) {
        keys_.push_back(prefix + name + '.' + row.name);
    }
    const std::string::size_type first = unknownKey.find('.');
    const std::string::size_type last = unknownKey.rfind('.');
    if (first < last) {
        keys_.push_back(prefix + unknownKey.substr(first + 1, last - first) + row.name);
    }
}

/// Limits the time spent on guesses for one file. Each wrong key is compared with all that could have been
/// meant, which would take hours for a large file of wrong keys; once the budget is spent, its remaining keys
/// get no guess.
class Budget {
public:
    bool isLeft() const { return left_ > 0; }

    /// \return whether comparing a word with all candidates is within the budget; if not, nothing of it is left
    bool affords(const std::string& word, const std::vector<std::string>& candidates) {
        std::size_t price = 0;
        for (const std::string& candidate : candidates) {
            price += word.size() * candidate.size();
        }
        const bool isAffordable = price <= left_;
        left_ = isAffordable ? left_ - price : 0;
        return isAffordable;
    }

private:
    std::size_t left_ = 50000000; ///< in pairs of characters; a second or so
};

/// \return the key that was probably meant, possibly one that declares an appender
std::string guessKey(const Configuration& configuration, const PropertyLine& line, Budget& budget) {
    if (!budget.isLeft()) {
        return std::string();
    }
    std::vector<std::string> known = ReadKeys(configuration, line.key).all();
    const std::string::size_type dot = line.key.find('.');
    if (dot != std::string::npos && line.key.find('.', dot + 1) == std::string::npos) {
        known.push_back(Log::appenderKey(line.key.substr(dot + 1)));
    }
    return budget.affords(line.key, known) ? nearKey(line.key, known) : std::string();
}

/// \return the declared appender that was probably meant
std::string guessAppender(const Configuration& configuration, const std::string& name, Budget& budget) {
    if (!budget.isLeft()) {
        return std::string();
    }
    std::vector<std::string> declared;
    for (const DeclaredAppender& appender : configuration.appenders()) {
        declared.push_back(appender.name);
    }
    return budget.affords(name, declared) ? nearWord(name, declared) : std::string();
}

void checkPartner(const Configuration& configuration, const PropertyLine& line, const KeyMeaning& meaning,
                  Findings& findings) {
    const Log::ConfigurationKey* const partner = configuration.missingPartner(meaning);
    if (partner == nullptr) {
        return;
    }
    const bool isPair = partner->requiredKey != nullptr;
    findings.addWarning(line, isPair ? "lonely-pair" : "ignored-key",
                        "has no effect without '" + Configuration::keyBeside(meaning, partner->name) + "'");
}

/// Warns of columns given together with another layout; that a layout is unknown is warned of elsewhere.
void checkColumns(const Configuration& configuration, const PropertyLine& line, const KeyMeaning& meaning,
                  Findings& findings) {
    if (meaning.row == nullptr || meaning.row->form != Log::ValueForm::COLUMNS) {
        return;
    }
    const DeclaredAppender* const appender = configuration.findAppender(meaning.owner);
    const PropertyLine* const layout =
        appender == nullptr ? nullptr : configuration.setting(*appender, Log::AppenderSetting::LAYOUT);
    const bool isOther = layout != nullptr &&
                         (layout->value == "plain" || layout->value == "process" || layout->value == "json");
    if (isOther) {
        findings.addWarning(line, "ignored-key",
                            "has no effect beside '" + layout->key + " = " + layout->value + "'");
    }
}

} // namespace

void checkKeys(const Configuration& configuration, Findings& findings) {
    std::set<std::string> undeclared;
    Budget budget;
    for (const PropertyLine& line : configuration.file().lines()) {
        const KeyMeaning meaning = configuration.meaningOf(line.key);
        if (meaning.kind == KeyMeaning::UNKNOWN) {
            const std::string guess = guessKey(configuration, line, budget);
            findings.addWarning(line, "unknown-key", "nothing reads this key" + question(guess));
        } else if (meaning.kind == KeyMeaning::UNDECLARED_APPENDER) {
            if (undeclared.insert(meaning.owner).second) {
                const std::string guess = guessAppender(configuration, meaning.owner, budget);
                findings.addWarning(line, "undeclared-appender",
                                    "no key '" + Log::appenderKey(meaning.owner) +
                                        "' declares the appender '" + meaning.owner + "'" + question(guess));
            }
        } else if (meaning.kind == KeyMeaning::FOREIGN_SETTING) {
            findings.addWarning(line, "ignored-key",
                                "a " + configuration.findAppender(meaning.owner)->className +
                                    " does not read this key");
        } else {
            checkPartner(configuration, line, meaning, findings);
            checkColumns(configuration, line, meaning, findings);
        }
    }
}

} // namespace Tools
} // namespace ZAV
