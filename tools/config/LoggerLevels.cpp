#include "config/LoggerLevels.h"

#include "config/InitTrial.h"
#include "log/LogException.h"
#include "log/LoggerFactory.h"
#include "log/config/LoggerKeys.h"
#include "zav-util/FileUtils.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

const char ROOT[] = "root";

/// Tree order: compares component by component.
bool isEarlierInTree(const std::string& a, const std::string& b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char left, char right) {
        const auto rank = [](char c) {
            return c == '.' ? -1 : static_cast<int>(static_cast<unsigned char>(c));
        };
        return rank(left) < rank(right);
    });
}

/// Does not ask the tree, since the loggers between the named ones may have very long names.
std::vector<std::string> namedLoggers(const Util::Properties& properties) {
    std::vector<std::string> named{ROOT};
    for (const Log::LoggerKey& key : Log::orderLoggerKeys(properties.getKeys())) {
        const std::string& name = key.loggerName;
        const bool isPath = Util::FileUtils::baseName(name) != name;
        if (name != ROOT && !isPath && isAcceptedLogger(name)) {
            named.push_back(name);
        }
    }
    std::sort(named.begin() + 1, named.end(), isEarlierInTree);
    named.erase(std::unique(named.begin(), named.end()), named.end());
    return named;
}

const Log::Logger& loggerCalled(const std::string& name) {
    return name == ROOT ? Log::LoggerFactory::getRootLogger() : Log::LoggerFactory::getLogger(name);
}

} // namespace

bool isAcceptedLogger(const std::string& name) {
    try {
        Log::checkName(Util::FileUtils::baseName(name));
        return true;
    } catch (const Log::LogException&) {
        return false;
    }
}

LoggerLevels::LoggerLevels(const Util::Properties& properties) {
    const ReportCapture reports;
    Log::LoggerFactory::getRootLogger().setLevel(Log::Level::LEVEL_WARNING, false);
    Log::LoggerFactory::initLoggers(properties);
    named_ = namedLoggers(properties);
}

Log::Level::LogLevel LoggerLevels::of(const std::string& loggerName) const {
    return loggerCalled(loggerName).getLevel();
}

std::string LoggerLevels::fullName(const std::string& loggerName) const {
    return loggerCalled(loggerName).getName();
}

} // namespace Tools
} // namespace ZAV
