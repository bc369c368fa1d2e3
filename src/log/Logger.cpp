#include "log/Logger.h"

#include "log/ConfigurationMessage.h"
#include "log/LoggerFactory.h"
#include "log/MessageType.h"
#include "log/commands/CommandBus.h"
#include "log/config/LoggerKeys.h"
#include "log/filters/TemporaryLevels.h"
#include "log/reentrancy/LibraryCall.h"
#include "log/tree/LoggerInside.h"
#include "zav-util/FileUtils.h"
#include "zav-util/Properties.h"

namespace ZAV {
namespace Log {

using Platform::ScopedLock;
using Util::FileUtils::baseName;
using Util::TimeUtils::Time;

void Logger::logPassed(Level::LogLevel level, std::string_view text, int line, std::string_view file) const {
    inside_->log(level, text, line, file, LOG);
}

void Logger::config(const ConfigurationMessage& configuration) {
    inside_->log(Level::LEVEL_AUDIT, configuration.getText(), 0, std::string_view(), CFG);
}

// Settings, which apply to the subtree. They change under the lock under which a new logger copies them from
// its parent: it either copies a change or is in the subtree that the change is applied to.

void Logger::setLevel(Level::LogLevel level, bool notify) {
    if (notify) {
        CommandBus::instance().deliver(CommandName::LOWER_DYNAMIC_LEVELS, Level::toString(level));
    }
    const ScopedLock lock(treeLock());
    const Time now = Time::now();
    inside_->forSubtree([level, now](Logger& logger)
                            ZAV_LOG_REQUIRES(treeLock()) { logger.inside_->setLevel(level, now); });
    TemporaryLevels::instance().endWhere(
        [this](const Logger* logger) { return logger->inside_->isBelow(*this); }, now);
}

Level::LogLevel Logger::temporaryLevel() const noexcept {
    return inside_->levelAt(Time::now());
}

void Logger::setExpirationTime(const Time& duration) {
    const ScopedLock lock(treeLock());
    inside_->forSubtree([&duration](Logger& logger) {
        logger.inside_->expirationTime_.store(duration.microseconds(), std::memory_order_relaxed);
    });
}

Time Logger::getExpirationTime() const {
    return Time(inside_->expirationTime_.load(std::memory_order_relaxed), Util::TimeUtils::USEC);
}

void Logger::addAppender(Appender* appender) {
    const ScopedLock lock(treeLock());
    AppenderList::Entries entries(inside_->countSubtree(), appender); // all or none if memory runs out
    inside_->forSubtree([&entries](Logger& logger)
                            ZAV_LOG_REQUIRES(treeLock()) { logger.inside_->appenders_.takeOne(entries); });
}

void Logger::removeAppender(Appender* appender) {
    {
        const ScopedLock lock(treeLock());
        inside_->forSubtree([appender](Logger& logger) ZAV_LOG_REQUIRES(treeLock()) {
            logger.inside_->appenders_.remove(appender);
        });
    }
    if (!LibraryCall::isOpen()) {
        inside_->waitForSubtree();
    }
}

// The tree

Logger::Logger(Logger* parent, const std::string& shortName)
    : name_(shortName), level_(Level::LEVEL_WARNING), inside_(new Inside(*this, parent)) {
    if (parent == nullptr) {
        return;
    }
    inside_->inherit();
    const bool parentIsRoot = parent->inside_->parent_ == nullptr;
    if (!parentIsRoot) {
        name_ = parent->name_ + "." + shortName;
    }
}

Logger::~Logger() = default;

Logger& Logger::getLogger(const std::string& path) {
    checkName(path); // before any logger is created
    const ScopedLock lock(treeLock());
    Logger* logger = this;
    std::string_view rest = path;
    for (std::size_t dot = rest.find('.'); dot != std::string_view::npos; dot = rest.find('.')) {
        logger = &logger->inside_->getChild(rest.substr(0, dot));
        rest.remove_prefix(dot + 1);
    }
    return logger->inside_->getChild(rest);
}

/// Unlike `getLogger`, skips the first empty component and takes everything after it as a single one.
const Logger* Logger::findLogger(const std::string& path) const {
    const ScopedLock lock(treeLock());
    const Logger* logger = this;
    std::string_view rest = path;
    for (std::size_t dot = rest.find('.'); dot != std::string_view::npos && dot != 0; dot = rest.find('.')) {
        logger = logger->inside_->findChild(rest.substr(0, dot));
        if (logger == nullptr) {
            return nullptr;
        }
        rest.remove_prefix(dot + 1);
    }
    const bool beginsWithDot = !rest.empty() && rest.front() == '.';
    return logger->inside_->findChild(rest.substr(beginsWithDot ? 1 : 0));
}

std::vector<std::string> Logger::getLoggerNames() const {
    std::vector<std::string> names;
    const ScopedLock lock(treeLock());
    inside_->forSubtree([this, &names](const Logger& logger) {
        if (&logger != this) {
            names.push_back(logger.name_);
        }
    });
    return names;
}

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

/// Initialised at load, so that no thread does it while another one forks.
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
