#include "config/Configuration.h"

#include "config/CustomAppenderClasses.h"
#include "config/LoggerLevels.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/LoggerKeys.h"

#include <algorithm>
#include <optional>

namespace ZAV {
namespace Tools {

using Log::KeySection;

namespace {

bool beginsWith(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

unsigned readerOf(const std::string& className) {
    const bool isOwn = CustomAppenderClasses::registered().count(className) != 0;
    return isOwn ? Log::READ_BY_REGISTERED_CLASS : Log::readerOfClass(className);
}

KeyMeaning settingOf(KeySection section, const std::string& name) {
    KeyMeaning meaning;
    meaning.row = Log::findKey(section, name);
    meaning.kind = meaning.row != nullptr ? KeyMeaning::SETTING : KeyMeaning::UNKNOWN;
    return meaning;
}

/// The table is Markdown, with words between backticks.
std::vector<std::string> wordsBetweenBackticks(const std::string& markdown) {
    std::vector<std::string> words;
    std::string::size_type begin = markdown.find('`');
    while (begin != std::string::npos) {
        const std::string::size_type end = markdown.find('`', begin + 1);
        words.push_back(markdown.substr(begin + 1, end - begin - 1));
        begin = markdown.find('`', std::min(end, markdown.size() - 1) + 1);
    }
    return words;
}

/// Some rows refer to another one for their words.
const Log::ConfigurationKey& rowWithWords(const Log::ConfigurationKey& key) {
    const Log::ConfigurationKey* row = &key;
    if (key.form == Log::ValueForm::PERIOD) {
        row = Log::findKey(KeySection::APPENDER, Log::AppenderSetting::EXPIRATION);
    } else if (key.form == Log::ValueForm::LEVEL) {
        row = Log::findKey(KeySection::LOGGER, Log::LoggerAttribute::LEVEL);
    }
    return row != nullptr ? *row : key;
}

} // namespace

Configuration::Configuration(const PropertyFile& file) : file_(file) {
    for (const PropertyLine& line : file_.lines()) {
        addLoggers(line);
        addAppender(line);
    }
    // The library goes by the declaring keys, each of which begins with "appender.", surplus dots aside.
    std::sort(appenders_.begin(), appenders_.end(), [](const DeclaredAppender& a, const DeclaredAppender& b) {
        return a.declaration->key < b.declaration->key;
    });
    for (std::size_t index = 0; index < appenders_.size(); ++index) {
        appendersByName_[appenders_[index].name] = index;
    }
}

void Configuration::addLoggers(const PropertyLine& line) {
    for (const Log::LoggerKey& key : Log::orderLoggerKeys({line.key})) {
        if (isAcceptedLogger(key.loggerName)) {
            loggers_.emplace(key.loggerName, &line);
        }
    }
}

void Configuration::addAppender(const PropertyLine& line) {
    const std::optional<std::string> name = Log::declaredAppender(line.key);
    if (name && appendersByName_.emplace(*name, 0).second) {
        std::string className;
        file_.properties().getProperty(Log::appenderKey(*name), className);
        appenders_.push_back({*name, className, readerOf(className), &line});
    }
}

const DeclaredAppender* Configuration::findAppender(const std::string& name) const {
    const auto found = appendersByName_.find(name);
    return found == appendersByName_.end() ? nullptr : &appenders_[found->second];
}

const PropertyLine* Configuration::setting(const DeclaredAppender& appender, const std::string& name) const {
    return file_.find(Log::appenderKey(appender.name, name));
}

KeyMeaning Configuration::meaningOf(const std::string& key) const {
    if (const std::optional<std::string> appender = Log::declaredAppender(key)) {
        KeyMeaning meaning;
        meaning.kind = KeyMeaning::DECLARATION;
        meaning.owner = *appender;
        return meaning;
    }
    const std::vector<Log::LoggerKey> loggerKeys = Log::orderLoggerKeys({key});
    if (!loggerKeys.empty()) {
        KeyMeaning meaning = settingOf(KeySection::LOGGER, loggerKeys.front().attribute);
        if (!isAcceptedLogger(loggerKeys.front().loggerName)) {
            meaning.kind = KeyMeaning::REFUSED_LOGGER;
        }
        return meaning;
    }
    const std::string dispatcher = Log::DISPATCHER_KEY_PREFIX;
    if (beginsWith(key, dispatcher)) {
        return settingOf(KeySection::DISPATCHER, key.substr(dispatcher.size()));
    }
    return beginsWith(key, Log::APPENDER_KEY_PREFIX) ? meaningOfAppenderKey(key) : KeyMeaning();
}

KeyMeaning Configuration::meaningOfAppenderKey(const std::string& key) const {
    const std::string rest = key.substr(std::string(Log::APPENDER_KEY_PREFIX).size());
    const std::string::size_type dot = rest.find('.');
    const std::string name = rest.substr(0, dot);
    if (name.empty() || dot == std::string::npos) {
        return KeyMeaning();
    }
    const DeclaredAppender* const appender = findAppender(name);
    KeyMeaning meaning = settingOf(KeySection::APPENDER, rest.substr(dot + 1));
    meaning.owner = name;
    if (appender == nullptr) {
        meaning.kind = KeyMeaning::UNDECLARED_APPENDER;
        return meaning;
    }
    const bool isRead = meaning.row != nullptr && (meaning.row->readers & appender->reader) != 0;
    if (appender->reader == Log::READ_BY_REGISTERED_CLASS && !isRead) {
        meaning.kind = KeyMeaning::CUSTOM_SETTING;
    } else if (meaning.row != nullptr && appender->reader != 0 && !isRead) {
        meaning.kind = KeyMeaning::FOREIGN_SETTING;
    }
    return meaning;
}

const Log::ConfigurationKey* Configuration::missingPartner(const KeyMeaning& meaning) const {
    if (meaning.kind != KeyMeaning::SETTING || meaning.row->requiredKey == nullptr ||
        file_.find(keyBeside(meaning, meaning.row->requiredKey)) != nullptr) {
        return nullptr;
    }
    return Log::findKey(meaning.row->section, meaning.row->requiredKey);
}

const Log::ConfigurationKey* Configuration::settingInEffect(const std::string& key) const {
    const KeyMeaning meaning = meaningOf(key);
    const bool hasEffect = meaning.kind == KeyMeaning::SETTING && missingPartner(meaning) == nullptr;
    return hasEffect ? meaning.row : nullptr;
}

std::string Configuration::keyBeside(const KeyMeaning& meaning, const std::string& name) {
    return meaning.row->section == Log::KeySection::APPENDER ? Log::appenderKey(meaning.owner, name)
                                                             : Log::dispatcherKey(name);
}

const PropertyLine& later(const PropertyLine& a, const PropertyLine& b) {
    return a.number < b.number ? b : a;
}

std::vector<std::string> wordsOf(const Log::ConfigurationKey& key) {
    return wordsBetweenBackticks(rowWithWords(key).values);
}

std::vector<std::string> appenderClasses() {
    std::vector<std::string> classes = wordsOf(*Log::findKey(KeySection::APPENDER, std::string()));
    const std::set<std::string>& own = CustomAppenderClasses::registered();
    classes.insert(classes.end(), own.begin(), own.end());
    return classes;
}

} // namespace Tools
} // namespace ZAV
