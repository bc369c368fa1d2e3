#include "log/LoggerFactory.h"

#include "log/config/LoggerKeys.h"
#include "zav-util/FileUtils.h"
#include "zav-util/Properties.h"

namespace ZAV {
namespace Log {

using Util::FileUtils::baseName;

namespace {

Logger& getConfiguredLogger(const std::string& name) {
    return name == "root" ? LoggerFactory::getRootLogger() : LoggerFactory::getLogger(name);
}

} // namespace

Logger& LoggerFactory::getRootLogger() {
    // Never destroyed, since threads may still log while the process ends.
    static Logger& root = *new Logger(nullptr, "root");
    return root;
}

namespace {

/// So that no thread makes it while another one forks.
const Logger& madeAtLoad = LoggerFactory::getRootLogger();

} // namespace

Logger& LoggerFactory::getLogger(const std::string& name) {
    return getRootLogger().getLogger(baseName(name));
}

Logger& LoggerFactory::getLogger(const std::string& parentName, const std::string& name) {
    return getRootLogger().getLogger(parentName + "." + baseName(name));
}

bool LoggerFactory::loggerExists(const std::string& name) {
    return getRootLogger().findLogger(baseName(name)) != nullptr;
}

bool LoggerFactory::loggerExists(const std::string& parentName, const std::string& name) {
    return getRootLogger().findLogger(parentName + "." + baseName(name)) != nullptr;
}

std::vector<std::string> LoggerFactory::getLoggerNames() {
    return getRootLogger().getLoggerNames();
}

void LoggerFactory::initLoggers(const Util::Properties& properties) {
    forEachLoggerKey(properties, [&properties](const LoggerKey& key) {
        Logger& logger = getConfiguredLogger(key.loggerName);
        const LoggerValue value = readLoggerValue(key, properties);
        if (value.level) {
            logger.setLevel(*value.level, true);
        }
        if (value.expiration) {
            logger.setExpirationTime(*value.expiration);
        }
    });
}

} // namespace Log
} // namespace ZAV
