#include "check/Checks.h"
#include "check/Nearest.h"
#include "log/config/KeyNames.h"

#include <set>

namespace ZAV {
namespace Tools {

namespace {

/// Every key that something would read, for the names that the file has, and for those in the unknown key
/// itself.
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

/// A key whose beginning already says that nothing reads it. It may have been meant to declare an appender.
void addUnknownKey(const Configuration& configuration, const PropertyLine& line, Findings& findings) {
    std::vector<std::string> known = ReadKeys(configuration, line.key).all();
    const std::string::size_type dot = line.key.find('.');
    if (dot != std::string::npos && line.key.find('.', dot + 1) == std::string::npos) {
        known.push_back(Log::appenderKey(line.key.substr(dot + 1)));
    }
    findings.addWarning(line, "unknown-key", "nothing reads this key" + question(nearKey(line.key, known)));
}

void addUndeclared(const Configuration& configuration, const PropertyLine& line, const std::string& name,
                   Findings& findings) {
    std::vector<std::string> declared;
    for (const DeclaredAppender& appender : configuration.appenders()) {
        declared.push_back(appender.name);
    }
    findings.addWarning(line, "undeclared-appender",
                        "no key '" + Log::appenderKey(name) + "' declares the appender '" + name + "'" +
                            question(nearWord(name, declared)));
}

void checkPartner(const Configuration& configuration, const PropertyLine& line, const KeyMeaning& meaning,
                  Findings& findings) {
    const Log::ConfigurationKey* const partner = configuration.missingPartner(meaning);
    if (partner == nullptr) {
        return;
    }
    const bool isPair = partner->neededKey != nullptr;
    findings.addWarning(line, isPair ? "lonely-pair" : "ignored-key",
                        "has no effect without '" + Log::appenderKey(meaning.owner, partner->name) + "'");
}

} // namespace

void checkKeys(const Configuration& configuration, Findings& findings) {
    std::set<std::string> undeclared;
    for (const PropertyLine& line : configuration.file().lines()) {
        const KeyMeaning meaning = configuration.meaningOf(line.key);
        if (meaning.kind == KeyMeaning::UNKNOWN) {
            addUnknownKey(configuration, line, findings);
        } else if (meaning.kind == KeyMeaning::UNDECLARED_APPENDER) {
            if (undeclared.insert(meaning.owner).second) {
                addUndeclared(configuration, line, meaning.owner, findings);
            }
        } else if (meaning.kind == KeyMeaning::FOREIGN_SETTING) {
            findings.addWarning(line, "ignored-key",
                                "a " + configuration.findAppender(meaning.owner)->className +
                                    " does not read this key");
        } else {
            checkPartner(configuration, line, meaning, findings);
        }
    }
}

} // namespace Tools
} // namespace ZAV
