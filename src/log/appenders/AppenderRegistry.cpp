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

/// Calls a function with the filter on levels, if there is one.
template <typename Function>
void forLevelFilter(const Appender::Filters& filters, const Function& function) {
    for (const auto& filter : filters) {
        if (auto* const levelFilter = dynamic_cast<LevelFilter*>(filter.get())) {
            function(*levelFilter);
        }
    }
}

void addLevel(AppenderStatus& status, const Appender::Filters& filters, Util::TimeUtils::Time now) {
    forLevelFilter(filters, [&](const LevelFilter& filter) {
        const LevelFilter::State state = filter.stateAt(now);
        status.hasLevel = true;
        status.level = state.level;
        status.until = state.until;
    });
}

/// \return the keys of one appender, whoever reads them
Util::Properties keysOf(const std::string& name, const Util::Properties& properties) {
    Util::Properties keys;
    const std::string beginning = appenderKey(name, std::string());
    for (auto entry = properties.lower_bound(beginning);
         entry != properties.end() && entry->first.compare(0, beginning.size(), beginning) == 0; ++entry) {
        keys.insert(*entry);
    }
    std::string className;
    if (properties.getProperty(appenderKey(name), className)) {
        keys[appenderKey(name)] = className;
    }
    return keys;
}

/// \throw LogException if an appender of that name is among those
void requireNewName(const Appender& appender, const std::vector<Appender*>& others) {
    const std::string& name = appender.getName();
    if (std::any_of(others.begin(), others.end(),
                    [&name](const Appender* other) { return other->getName() == name; })) {
        throw LogException("Appender " + name + " has already been registered.");
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
    putIntoService({std::unique_ptr<Appender>(appender), className, Util::Properties()});
}

Appender* AppenderRegistry::putIntoService(CreatedAppender created) {
    Appender& appender = *created.appender;
    requireNewName(appender, inService());
    CreatedAppenders added;
    added.push_back(std::move(created));
    {
        const ScopedLock tablesLock(tablesLock_);
        createdAppenders_.splice(createdAppenders_.end(), added);
    }
    LoggerFactory::getRootLogger().addAppender(&appender);
    if (!appender.isSynchronous()) {
        AsynchronousDispatcher::instance().registerAsynchronousAppender(&appender);
    }
    return &appender;
}

std::vector<Appender*> AppenderRegistry::inService() const {
    std::vector<Appender*> appenders;
    const ScopedLock tablesLock(tablesLock_);
    for (const CreatedAppender& created : createdAppenders_) {
        appenders.push_back(created.appender.get());
    }
    return appenders;
}

/// The filters are asked when the lock is free: they have locks of their own, and a fork takes all of these
/// in another order.
std::vector<AppenderStatus> AppenderRegistry::statuses() const {
    std::vector<AppenderStatus> statuses;
    std::vector<Appender::Filters> filters;
    {
        const ScopedLock tablesLock(tablesLock_);
        for (const CreatedAppender& created : createdAppenders_) {
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
            created.push_back(putIntoService(create(properties, *name)));
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
CreatedAppender AppenderRegistry::create(const Util::Properties& properties, const std::string& name) const {
    std::string className;
    properties.getProperty(appenderKey(name), className);
    const boost::shared_ptr<AbstractAppenderFactory> factory = factoryOf(className);
    if (factory == nullptr) {
        throw LogException("No factory registered for appenderName = " + name +
                           ", appenderClass = " + className);
    }
    Util::Properties keys = keysOf(name, properties);
    return {std::unique_ptr<Appender>(factory->create(properties, name)), className, std::move(keys)};
}

// The change to another configuration

AppenderExchange AppenderRegistry::prepareExchange(const Util::Properties& properties) {
    AppenderExchange exchange;
    exchange.before = inService();
    for (const std::string& key : properties.getKeys()) {
        const std::optional<std::string> name = declaredAppender(key);
        if (!name) {
            continue;
        }
        Appender* appender = findCreated(keysOf(*name, properties));
        if (appender != nullptr) {
            exchange.created.push_back({nullptr, std::string(), Util::Properties()});
        } else {
            exchange.created.push_back(create(properties, *name));
            appender = exchange.created.back().appender.get();
        }
        requireNewName(*appender, exchange.after);
        exchange.after.push_back(appender);
    }
    return exchange;
}

/// \return null if none has been made from just these keys
Appender* AppenderRegistry::findCreated(const Util::Properties& keys) const {
    if (keys.empty()) {
        return nullptr;
    }
    const ScopedLock tablesLock(tablesLock_);
    const auto found = std::find_if(createdAppenders_.begin(), createdAppenders_.end(),
                                    [&keys](const CreatedAppender& created) { return created.keys == keys; });
    return found == createdAppenders_.end() ? nullptr : found->appender.get();
}

/// The table takes no memory to change.
void AppenderRegistry::exchange(AppenderExchange& exchange, const std::function<void()>& apply) {
    const ScopedLock tablesLock(tablesLock_);
    apply();
    auto created = exchange.created.begin();
    for (const Appender* const appender : exchange.after) {
        if (created->appender == nullptr) {
            std::swap(*created, *std::find_if(createdAppenders_.begin(), createdAppenders_.end(),
                                              [appender](const CreatedAppender& staying) {
                                                  return staying.appender.get() == appender;
                                              }));
        }
        ++created;
    }
    createdAppenders_.swap(exchange.created);
}

void AppenderRegistry::restoreLevel(const Appender& appender) {
    forLevelFilter(appender.filters_, [](LevelFilter& filter) { filter.restore(); });
}

bool AppenderRegistry::hasLoweredLevel(const Appender& appender) {
    bool isLowered = false;
    const Util::TimeUtils::Time now = Util::TimeUtils::Time::now();
    forLevelFilter(appender.filters_,
                   [&](const LevelFilter& filter) { isLowered = isLowered || filter.isLowered(now); });
    return isLowered;
}

// The end

/// Takes no memory, so that it cannot fail.
void AppenderRegistry::destroyAppenders() {
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
