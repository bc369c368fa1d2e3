#include "log/appenders/AppenderRegistry.h"

#include "log/Appender.h"
#include "log/LogException.h"
#include "log/LoggerFactory.h"
#include "log/appenders/AppenderFactory.h"
#include "log/appenders/RollingFileAppender.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/config/ConfigurationKeys.h"
#include "log/filters/MessageFilters.h"
#include "log/reentrancy/LibraryCall.h"
#include "zav-util/Properties.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// Calls a function with the level filter, if there is one.
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

/// \return all keys of one appender, including unknown ones
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

/// The names of appenders, which must be unique.
class Names {
public:
    explicit Names(const std::vector<Appender*>& appenders) {
        for (const Appender* const appender : appenders) {
            names_.insert(appender->getName());
        }
    }

    /// \throw LogException if there is an appender of that name
    void add(const Appender& appender) {
        if (!names_.insert(appender.getName()).second) {
            throw LogException("Appender " + appender.getName() + " has already been registered.");
        }
    }

private:
    std::set<std::string> names_;
};

/// \return the appenders that are not among `others`
std::vector<Appender*> without(const std::vector<Appender*>& appenders, const std::set<Appender*>& others) {
    std::vector<Appender*> result;
    std::copy_if(appenders.begin(), appenders.end(), std::back_inserter(result),
                 [&others](Appender* appender) { return others.count(appender) == 0; });
    return result;
}

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
    CreatedAppender created{std::unique_ptr<Appender>(appender), className, Util::Properties()};
    Names(inService()).add(*appender);
    putIntoService(std::move(created));
}

Appender* AppenderRegistry::putIntoService(CreatedAppender created) {
    Appender& appender = *created.appender;
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

/// The filters are read after the lock is released: they have locks of their own, which a fork takes in a
/// different order.
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
    std::vector<Appender*> appenders;
    Names names(inService());
    for (const std::string& key : properties.getKeys()) {
        if (const std::optional<std::string> name = declaredAppender(key)) {
            CreatedAppender created = create(properties, *name);
            names.add(*created.appender);
            appenders.push_back(putIntoService(std::move(created)));
        }
    }
    cleanUpOldFiles(appenders);
}

void AppenderRegistry::cleanUpOldFiles(const std::vector<Appender*>& appenders) {
    for (Appender* const appender : appenders) {
        if (auto* const rolling = dynamic_cast<RollingFileAppender*>(appender)) {
            rolling->cleanUpOldFiles();
        }
    }
}

/// \return null if there is no such class
boost::shared_ptr<AbstractAppenderFactory> AppenderRegistry::factoryOf(const std::string& className) const {
    const ScopedLock tablesLock(tablesLock_);
    const auto found = factories_.find(className);
    return found == factories_.end() ? nullptr : found->second;
}

/// The declaring key may contain more dots than the key looked up here, which is then a different one.
CreatedAppender AppenderRegistry::create(const Util::Properties& properties, const std::string& name) {
    std::string className;
    properties.getProperty(appenderKey(name), className);
    const boost::shared_ptr<AbstractAppenderFactory> factory = factoryOf(className);
    if (factory == nullptr) {
        throw LogException("No factory registered for appenderName = " + name +
                           ", appenderClass = " + className);
    }
    Util::Properties keys = keysOf(name, properties);
    struct Making {
        explicit Making(bool& flag) : isMaking(flag) { isMaking = true; }
        ~Making() { isMaking = false; }
        bool& isMaking;
    } const making(threadRecord().isMaking);
    return {std::unique_ptr<Appender>(factory->create(properties, name)), className, std::move(keys)};
}

// Changing to another configuration

/// Leaves out appenders created without keys. The pointers stay valid until the exchange.
AppenderRegistry::CreatedByKeys AppenderRegistry::createdByKeys() {
    CreatedByKeys result;
    const ScopedLock tablesLock(tablesLock_);
    for (CreatedAppender& created : createdAppenders_) {
        if (!created.keys.empty()) {
            result.emplace(&created.keys, &created);
        }
    }
    return result;
}

AppenderExchange AppenderRegistry::prepareExchange(const Util::Properties& properties) {
    AppenderExchange exchange;
    exchange.before = inService();
    const CreatedByKeys known = createdByKeys();
    Names names({});
    for (const std::string& key : properties.getKeys()) {
        const std::optional<std::string> name = declaredAppender(key);
        if (!name) {
            continue;
        }
        const Util::Properties keys = keysOf(*name, properties);
        const auto found = known.find(&keys);
        const bool stays = found != known.end();
        exchange.inTable.push_back(stays ? found->second : nullptr);
        exchange.created.push_back(stays ? CreatedAppender() : create(properties, *name));
        CreatedAppender& made = exchange.created.back();
        Appender* const appender = stays ? found->second->appender.get() : made.appender.get();
        names.add(*appender);
        exchange.after.push_back(appender);
        (stays ? exchange.staying : exchange.coming).push_back(appender);
    }
    exchange.leaving = without(exchange.before, {exchange.staying.begin(), exchange.staying.end()});
    return exchange;
}

/// The table is changed without allocating.
void AppenderRegistry::exchange(AppenderExchange& exchange, const std::function<void()>& apply) {
    const ScopedLock tablesLock(tablesLock_);
    apply();
    auto staying = exchange.inTable.begin();
    for (CreatedAppender& created : exchange.created) {
        if (*staying != nullptr) {
            std::swap(created, **staying);
        }
        ++staying;
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

// Shutdown

/// Does not allocate, so it cannot fail.
void AppenderRegistry::destroyAppenders() {
    while (Appender* const appender = firstAppender()) {
        LoggerFactory::getRootLogger().removeAppender(appender);
        if (!appender->isSynchronous()) {
            AsynchronousDispatcher::instance().unregisterAsynchronousAppender(appender);
        }
        CreatedAppenders
            destroyed; // destroyed after it has left the table, which must be consistent in a forked child
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
