#include "config/LoggerLevels.h"

#include "config/ReportCapture.h"
#include "log/LoggerFactory.h"
#include "log/config/LoggerKeys.h"

#include <set>

namespace ZAV {
namespace Tools {

namespace {

const char ROOT[] = "root";

std::vector<std::string> namedLoggers(const Util::Properties& properties) {
    std::set<std::string> configured;
    for (const Log::LoggerKey& key : Log::orderLoggerKeys(properties.getKeys())) {
        configured.insert(key.loggerName);
    }
    std::vector<std::string> named{ROOT};
    for (const std::string& name : Log::LoggerFactory::getLoggerNames()) {
        if (name != ROOT && configured.count(name) != 0) {
            named.push_back(name);
        }
    }
    return named;
}

const Log::Logger& loggerCalled(const std::string& name) {
    return name == ROOT ? Log::LoggerFactory::getRootLogger() : Log::LoggerFactory::getLogger(name);
}

} // namespace

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
