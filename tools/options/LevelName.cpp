#include "options/LevelName.h"

#include "Outcome.h"
#include "log/LogException.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

char toCapital(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

} // namespace

std::optional<Log::Level::LogLevel> findLevel(std::string word) {
    std::transform(word.begin(), word.end(), word.begin(), toCapital);
    try {
        return Log::Level::fromString(word);
    } catch (const Log::LogException&) {
        return std::nullopt;
    }
}

Log::Level::LogLevel readLevel(const std::string& name) {
    const std::optional<Log::Level::LogLevel> level = findLevel(name);
    if (!level) {
        throw UsageError("There is no '" + name + "' LogLevel defined. " + LIST_OF_LEVELS);
    }
    return *level;
}

std::string levelName(const std::string& word) {
    const std::optional<Log::Level::LogLevel> level = findLevel(word);
    return level ? Log::Level::toString(*level) : word;
}

} // namespace Tools
} // namespace ZAV
