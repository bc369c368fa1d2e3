#include "explain/RunningLevels.h"

#include "Outcome.h"
#include "ctl/ControlClient.h"
#include "log/LoggerFactory.h"
#include "log/config/ConfigurationKeys.h"
#include "options/LevelName.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

constexpr int WORDS_AFTER_LOGGER = 2; ///< its level and its minutes
constexpr int BEHIND_APPENDER = 4;    ///< class, sync or async, level and seconds

/// Limits the memory for the names in an answer. Each logger is made here, with its ancestors and their full
/// names, so that an answer of a few megabytes could demand gigabytes.
constexpr std::size_t MAX_MEMORY = 16 * 1024 * 1024;

/// \return the approximate memory for a name that follows another one in tree order
std::size_t memoryOf(const std::string& name, const std::string& previous) {
    const std::size_t ofLogger = 500;
    const auto different = std::mismatch(name.begin(), name.end(), previous.begin(), previous.end()).first;
    const auto made = static_cast<std::size_t>(std::count(different, name.end(), '.')) + 1;
    return made * (ofLogger + name.size());
}

/// Removes and returns the last word of a line.
std::string takeLastWord(std::string& line) {
    const std::size_t blank = line.find_last_of(' ');
    const std::string word = blank == std::string::npos ? std::string() : line.substr(blank + 1);
    line.erase(std::min(blank, line.size()));
    return word;
}

std::string ask(ControlClient& client, const std::string& request) {
    const ControlClient::Answer answer = client.ask(request);
    if (!answer.refusal.empty()) {
        throw Failure(answer.refusal);
    }
    return answer.lines;
}

} // namespace

RunningLevels::RunningLevels(const std::string& address) : address_(address) {
    ControlClient client(address);
    loggers_ = read(client, "loggers", WORDS_AFTER_LOGGER);
    appenders_ = read(client, "appenders", BEHIND_APPENDER);
}

/// Parses from the end, since a name may contain blanks; the level is the last word but one.
std::vector<RunningLevels::Named> RunningLevels::read(ControlClient& client, const std::string& request,
                                                      int wordsAfterName) const {
    const std::string answer = ask(client, request);
    std::vector<Named> all;
    std::size_t memory = 0;
    for (std::size_t begin = 0, end = 0; begin < answer.size(); begin = end + 1) {
        end = answer.find('\n', begin);
        std::string line = answer.substr(begin, end - begin);
        takeLastWord(line);
        const std::string level = takeLastWord(line);
        for (int taken = 2; taken < wordsAfterName; ++taken) {
            takeLastWord(line);
        }
        memory += memoryOf(line, all.empty() ? std::string() : all.back().name);
        if (memory > MAX_MEMORY) {
            reportError("the program at " + address_ + " has too many " + request + "; all but the first " +
                        std::to_string(all.size()) + " are left out");
            break;
        }
        all.push_back({line, findLevel(level)});
        if (line.empty() || (!all.back().level && level != "-")) {
            throw Failure(address_ + ": the answer cannot be understood");
        }
    }
    return all;
}

const RunningLevels::Named* RunningLevels::findAppender(const std::string& name) const {
    const auto found = std::find_if(appenders_.begin(), appenders_.end(),
                                    [&name](const Named& appender) { return appender.name == name; });
    return found == appenders_.end() ? nullptr : &*found;
}

void RunningLevels::applyTo(Util::Properties& properties) const {
    for (const std::string& key : properties.getKeys()) {
        const std::optional<std::string> name = Log::declaredAppender(key);
        if (!name) {
            continue;
        }
        const Named* const running = findAppender(*name);
        if (running == nullptr) {
            reportError("the program at " + address_ + " has no appender '" + *name +
                        "'; its level is that of the file");
            continue;
        }
        const std::string level = Log::appenderKey(*name, Log::AppenderSetting::LEVEL);
        properties.erase(Log::appenderKey(*name, Log::AppenderSetting::EXPIRATION));
        properties.erase(level);
        if (running->level) {
            properties[level] = Log::Level::toString(*running->level);
        }
    }
}

void RunningLevels::applyToLoggers() const {
    for (const Named& logger : loggers_) {
        Log::Logger& own = logger.name == "root" ? Log::LoggerFactory::getRootLogger()
                                                 : Log::LoggerFactory::getLogger(logger.name);
        own.setLevel(logger.level.value_or(own.getLevel()), false);
    }
}

} // namespace Tools
} // namespace ZAV
