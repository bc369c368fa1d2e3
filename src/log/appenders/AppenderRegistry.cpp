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
#include "zav-util/StringUtils.h"

#include <algorithm>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

AppenderRegistry& AppenderRegistry::instance() {
    static AppenderRegistry& registry = *new AppenderRegistry;
    return registry;
}

void AppenderRegistry::registerFactory(const std::string& className, AbstractAppenderFactory* factory) {
    const ScopedLock lock(factoriesLock_);
    factories_[className] = boost::shared_ptr<AbstractAppenderFactory>(factory);
}

void AppenderRegistry::registerAppender(Appender* appender) {
    std::unique_ptr<Appender> owned(appender);
    const ScopedLock lock(createdAppendersLock_);
    if (hasAppender(appender->getName())) {
        const std::string problem = "Appender " + appender->getName() + " has already been registered.";
        owned.reset();
        throw LogException(problem);
    }
    createdAppenders_.push_back(std::move(owned));
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
    registerFactory("StdoutAppender", new DefaultAppenderFactory<StdoutAppenderBuilder>);
    registerFactory("FileAppender", new DefaultAppenderFactory<FileAppenderBuilder>);
    registerFactory("SimpleFileAppender", new DefaultAppenderFactory<SimpleFileAppenderBuilder>);
    for (const std::string& key : properties.getKeys()) {
        const std::vector<std::string> tokens = Util::split(key, '.');
        const bool declaresAppender = tokens.size() == 2 && tokens[0] == "appender";
        if (declaresAppender) {
            createAppender(properties, tokens[1]);
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

void AppenderRegistry::destroyAppenders() {
    const ScopedLock lock(createdAppendersLock_);
    for (std::unique_ptr<Appender>& appender : createdAppenders_) {
        LoggerFactory::getRootLogger().removeAppender(appender.get());
        if (!appender->isSynchronous()) {
            AsynchronousDispatcher::instance().unregisterAsynchronousAppender(appender.get());
        }
        appender.reset();
    }
    createdAppenders_.clear();
}

} // namespace Log
} // namespace ZAV
