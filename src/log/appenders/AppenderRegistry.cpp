#include "log/appenders/AppenderRegistry.h"

#include "log/Appender.h"
#include "log/LogException.h"
#include "log/LoggerFactory.h"
#include "log/appenders/AppenderBuilder.h"
#include "log/appenders/RollingFileAppender.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/KeyNames.h"
#include "log/filters/LevelFilter.h"
#include "zav-util/Properties.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <optional>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

void addLevel(AppenderStatus& status, const Appender::Filters& filters, Util::TimeUtils::Time now) {
    for (const auto& filter : filters) {
        if (const auto* const levelFilter = dynamic_cast<const LevelFilter*>(filter.get())) {
            const LevelFilter::State state = levelFilter->stateAt(now);
            status.hasLevel = true;
            status.level = state.level;
            status.until = state.until;
        }
    }
}

} // namespace

AppenderRegistry& AppenderRegistry::instance() {
    static AppenderRegistry& registry = *new AppenderRegistry;
    return registry;
}

namespace {

/// So that no thread makes it while another one forks.
const AppenderRegistry& madeAtLoad = AppenderRegistry::instance();

} // namespace

void AppenderRegistry::registerFactory(const std::string& className, AbstractAppenderFactory* factory) {
    boost::shared_ptr<AbstractAppenderFactory> replaced(factory);
    const ScopedLock tablesLock(tablesLock_);
    factories_[className].swap(replaced);
}

void AppenderRegistry::registerClass(const std::string& className, RegisteredClassFactory::Maker maker) {
    const auto factory = boost::make_shared<RegisteredClassFactory>(className, std::move(maker));
    const ScopedLock tablesLock(tablesLock_);
    if (readerOfClass(className) != 0 || !factories_.emplace(className, factory).second) {
        throw LogException("Appender class " + className + " has already been registered.");
    }
}

void AppenderRegistry::registerAppender(Appender* appender, const std::string& className) {
    std::unique_ptr<Appender> owned(appender);
    CreatedAppenders added;
    added.push_back({nullptr, className});
    added.front().appender = std::move(owned);
    const ScopedLock lock(createdAppendersLock_);
    if (hasAppender(appender->getName())) {
        const std::string problem = "Appender " + appender->getName() + " has already been registered.";
        added.clear();
        throw LogException(problem);
    }
    {
        const ScopedLock tablesLock(tablesLock_);
        createdAppenders_.splice(createdAppenders_.end(), added);
    }
    LoggerFactory::getRootLogger().addAppender(appender);
    if (!appender->isSynchronous()) {
        AsynchronousDispatcher::instance().registerAsynchronousAppender(appender);
    }
}

bool AppenderRegistry::hasAppender(const std::string& name) const {
    const ScopedLock tablesLock(tablesLock_);
    return std::any_of(createdAppenders_.begin(), createdAppenders_.end(),
                       [&name](const Created& created) { return created.appender->getName() == name; });
}

/// The filters are asked when the lock is free: they have locks of their own, and a fork takes all of these
/// in another order.
std::vector<AppenderStatus> AppenderRegistry::statuses() const {
    std::vector<AppenderStatus> statuses;
    std::vector<Appender::Filters> filters;
    {
        const ScopedLock tablesLock(tablesLock_);
        for (const Created& created : createdAppenders_) {
            const Appender& appender = *created.appender;
            AppenderStatus& status = statuses.emplace_back();
            status.name = appender.getName();
            status.className = created.className;
            status.synchronous = appender.isSynchronous();
            filters.push_back(appender.filters_);
        }
    }
    const Util::TimeUtils::Time now = Util::TimeUtils::Time::now();
    for (std::size_t index = 0; index < statuses.size(); ++index) {
        addLevel(statuses[index], filters[index], now);
    }
    return statuses;
}

void AppenderRegistry::initAppenders(const Util::Properties& properties) {
    registerFactory(AppenderClass::STDOUT, new DefaultAppenderFactory<StdoutAppenderBuilder>);
    registerFactory(AppenderClass::FILE_SERIES, new DefaultAppenderFactory<FileAppenderBuilder>);
    registerFactory(AppenderClass::SINGLE_FILE, new DefaultAppenderFactory<SimpleFileAppenderBuilder>);
    registerFactory(AppenderClass::ROLLED_FILE, new DefaultAppenderFactory<RollingFileAppenderBuilder>);
    std::vector<Appender*> created;
    for (const std::string& key : properties.getKeys()) {
        if (const std::optional<std::string> name = declaredAppender(key)) {
            created.push_back(createAppender(properties, *name));
        }
    }
    for (Appender* const appender : created) {
        if (auto* const rolling = dynamic_cast<RollingFileAppender*>(appender)) {
            rolling->tidyUp();
        }
    }
}

/// \return null if there is no such class
boost::shared_ptr<AbstractAppenderFactory> AppenderRegistry::factoryOf(const std::string& className) const {
    const ScopedLock tablesLock(tablesLock_);
    const auto found = factories_.find(className);
    return found == factories_.end() ? nullptr : found->second;
}

/// The declaring key may have had more dots than the one that is looked up, and then names another key.
Appender* AppenderRegistry::createAppender(const Util::Properties& properties, const std::string& name) {
    std::string className;
    properties.getProperty(appenderKey(name), className);
    const boost::shared_ptr<AbstractAppenderFactory> factory = factoryOf(className);
    if (factory == nullptr) {
        throw LogException("No factory registered for appenderName = " + name +
                           ", appenderClass = " + className);
    }
    Appender* const created = factory->create(properties, name);
    registerAppender(created, className);
    return created;
}

/// Takes no memory, so that it cannot fail.
void AppenderRegistry::destroyAppenders() {
    const ScopedLock lock(createdAppendersLock_);
    while (Appender* const appender = firstAppender()) {
        LoggerFactory::getRootLogger().removeAppender(appender);
        if (!appender->isSynchronous()) {
            AsynchronousDispatcher::instance().unregisterAsynchronousAppender(appender);
        }
        CreatedAppenders destroyed; // when it is out of the table, which a forked child must find whole
        const ScopedLock tablesLock(tablesLock_);
        destroyed.splice(destroyed.end(), createdAppenders_, createdAppenders_.begin());
    }
}

Appender* AppenderRegistry::firstAppender() const {
    const ScopedLock tablesLock(tablesLock_);
    return createdAppenders_.empty() ? nullptr : createdAppenders_.front().appender.get();
}

} // namespace Log
} // namespace ZAV
