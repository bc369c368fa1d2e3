#include "log/LoggerFactory.h"

#include "log/config/KeyNames.h"
#include "log/config/LoggerKeys.h"
#include "zav-util/Conversions.h"
#include "zav-util/FileUtils.h"
#include "zav-util/Properties.h"
#include "zav-util/StandardError.h"

#include <exception>
#include <new>

namespace ZAV {
namespace Log {

using Util::FileUtils::baseName;

namespace {

Util::TimeUtils::Time toMinutes(const std::string& value) {
    const std::int64_t minutes = Util::toInteger(value);
    return Util::TimeUtils::Time(static_cast<std::uint64_t>(minutes), Util::TimeUtils::MIN);
}

void applySetting(Logger& logger, const std::string& attribute, const std::string& value) {
    if (attribute == LoggerAttribute::LEVEL) {
        logger.setLevel(Level::fromString(value), true);
    } else if (attribute == LoggerAttribute::EXPIRATION) {
        logger.setExpirationTime(toMinutes(value));
    }
}

Logger& getConfiguredLogger(const std::string& name) {
    return name == "root" ? LoggerFactory::getRootLogger() : LoggerFactory::getLogger(name);
}

void applyKey(const LoggerKey& key, const Util::Properties& properties) {
    try {
        Logger& logger = getConfiguredLogger(key.loggerName);
        std::string value;
        properties.getProperty(key.key, value);
        applySetting(logger, key.attribute, value);
    } catch (const std::bad_alloc&) {
        throw; // the value may be a good one
    } catch (const std::exception& exception) {
        Util::writeErrorLine("Exception parsing property " + key.key + ": " + exception.what());
    }
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
    for (const LoggerKey& key : orderLoggerKeys(properties.getKeys())) {
        applyKey(key, properties);
    }
}

} // namespace Log
} // namespace ZAV
