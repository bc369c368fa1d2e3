#include "check/KeyTable.h"

#include "config/CustomAppenderClasses.h"
#include "log/config/ConfigurationKeys.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

using Log::ConfigurationKey;
using Log::KeySection;
using Log::ValueForm;

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
const ConfigurationKey& rowWithWords(const ConfigurationKey& key) {
    const ConfigurationKey* row = &key;
    if (key.form == ValueForm::PERIOD) {
        row = Log::findKey(KeySection::APPENDER, Log::AppenderSetting::EXPIRATION);
    } else if (key.form == ValueForm::LEVEL) {
        row = Log::findKey(KeySection::LOGGER, Log::LoggerAttribute::LEVEL);
    }
    return row != nullptr ? *row : key;
}

} // namespace

std::vector<std::string> wordsOf(const ConfigurationKey& key) {
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
