#include "log/appenders/AppenderRegistry.h"

#include "log/Appender.h"
#include "log/LogException.h"
#include "log/LoggerFactory.h"
#include "log/appenders/DefaultAppenderFactory.h"
#include "log/appenders/FileAppenderBuilder.h"
#include "log/appenders/SimpleFileAppenderBuilder.h"
#include "log/appenders/StdoutAppenderBuilder.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/config/KeyNames.h"
#include "zav-util/Properties.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

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
    const ScopedLock lock(factoriesLock_);
    const ScopedLock tablesLock(tablesLock_);
    factories_[className].swap(replaced);
}

void AppenderRegistry::registerAppender(Appender* appender) {
    std::unique_ptr<Appender> owned(appender);
    CreatedAppenders added;
    added.push_back(std::move(owned));
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
    return std::any_of(
        createdAppenders_.begin(), createdAppenders_.end(),
        [&name](const std::unique_ptr<Appender>& created) { return created->getName() == name; });
}

void AppenderRegistry::initAppenders(const Util::Properties& properties) {
    registerFactory(AppenderClass::STDOUT, new DefaultAppenderFactory<StdoutAppenderBuilder>);
    registerFactory(AppenderClass::FILE_SERIES, new DefaultAppenderFactory<FileAppenderBuilder>);
    registerFactory(AppenderClass::SINGLE_FILE, new DefaultAppenderFactory<SimpleFileAppenderBuilder>);
    for (const std::string& key : properties.getKeys()) {
        if (const std::optional<std::string> name = declaredAppender(key)) {
            createAppender(properties, *name);
        }
    }
}

/// The declaring key may have had more dots than the one that is looked up, and then names another key.
void AppenderRegistry::createAppender(const Util::Properties& properties, const std::string& name) {
    std::string className;
    properties.getProperty(appenderKey(name), className);
    const ScopedLock lock(factoriesLock_);
    const auto factory = factories_.find(className);
    if (factory == factories_.end()) {
        throw LogException("No factory registered for appenderName = " + name +
                           ", appenderClass = " + className);
    }
    registerAppender(factory->second->create(properties, name));
}

/// Takes no memory, so that it cannot fail.
void AppenderRegistry::destroyAppenders() {
    const ScopedLock lock(createdAppendersLock_);
    while (!createdAppenders_.empty()) {
        Appender* const appender = createdAppenders_.front().get();
        LoggerFactory::getRootLogger().removeAppender(appender);
        if (!appender->isSynchronous()) {
            AsynchronousDispatcher::instance().unregisterAsynchronousAppender(appender);
        }
        CreatedAppenders destroyed; // when it is out of the table, which a forked child must find whole
        const ScopedLock tablesLock(tablesLock_);
        destroyed.splice(destroyed.end(), createdAppenders_, createdAppenders_.begin());
    }
}

} // namespace Log
} // namespace ZAV
