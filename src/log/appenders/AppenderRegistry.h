#pragma once

#include "log/AppenderStatus.h"
#include "log/appenders/AppenderFactory.h"
#include "platform/CriticalSection.h"
#include "platform/Process.h"
#include "zav-util/Properties.h"

#include <boost/shared_ptr.hpp>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

/// An appender in service, and what it was created from.
struct CreatedAppender {
    std::unique_ptr<Appender> appender;
    std::string className;
    Util::Properties keys; ///< "appender.<name>" and all keys that begin with "appender.<name>."
};
using CreatedAppenders = std::list<CreatedAppender>;

/// The appenders of a new configuration, which are to replace those in service.
struct AppenderExchange {
    CreatedAppenders created; ///< no appender in one that stays; after the exchange, holds those that left
    std::vector<CreatedAppender*> inTable; ///< for each of `created`, the table's entry that stays, or null
    std::vector<Appender*> before;         ///< all in service before the exchange
    std::vector<Appender*> after;          ///< all in service after it, in the order of their creation
    std::vector<Appender*> leaving;        ///< those in `before` but not in `after`
    std::vector<Appender*> staying;
    std::vector<Appender*> coming;
};

/// Creates, owns and destroys the appenders that a configuration declares.
///
/// Functions that put appenders into service or take them out are serialised by the life-cycle lock.
class AppenderRegistry : public Platform::NeverDestroyed<AppenderRegistry> {
public:
    /// \param factory takes ownership; replaces and destroys an earlier factory for that class name
    void registerFactory(const std::string& className, AbstractAppenderFactory* factory);

    /// Registers a class of the application.
    /// \throw LogException if the class already exists
    void registerClass(const std::string& className, RegisteredClassFactory::Maker maker);

    /// Puts an appender into service: attaches it to every logger, and to the dispatcher if it is
    /// asynchronous.
    /// \param appender takes ownership
    /// \param className its class name in the configuration
    /// \throw LogException if an appender of that name is in service; the new one is then destroyed
    void registerAppender(Appender* appender, const std::string& className);

    /// Creates every appender that the properties declare by a key "appender.<name>".
    /// \throw LogException for an unknown class name, a name declared twice, or an invalid setting; appenders created
    ///        before that stay in service
    void initAppenders(const Util::Properties& properties);

    /// Creates every appender that the properties declare, except those that exist with the same keys, which
    /// stay. Nothing is put into service or removed yet.
    /// \throw what `initAppenders` would throw; what was created is then destroyed
    AppenderExchange prepareExchange(const Util::Properties& properties);

    /// Makes appenders that are new in service tidy up files left by earlier ones.
    static void cleanUpOldFiles(const std::vector<Appender*>& appenders);

    /// Puts the appenders of an exchange into the table, atomically with `apply`.
    /// \param apply makes the loggers use them; if it throws, nothing changes
    void exchange(AppenderExchange& exchange, const std::function<void()>& apply);

    /// Restores the configured level if a command has lowered it.
    static void restoreLevel(const Appender& appender);

    /// \return whether a command has lowered the level of an appender
    static bool hasLoweredLevel(const Appender& appender);

    /// \return the current status of the appenders in service, in the order of their creation. Waits for no delivery, so
    ///         an appender or a listener may call it.
    std::vector<AppenderStatus> statuses() const;

    /// Takes all appenders out of service and destroys them.
    void destroyAppenders();

private:
    struct ByContent {
        bool operator()(const Util::Properties* one, const Util::Properties* other) const {
            return *one < *other;
        }
    };
    using CreatedByKeys = std::map<const Util::Properties*, CreatedAppender*, ByContent>;

    friend NeverDestroyed;
    AppenderRegistry() = default;

    boost::shared_ptr<AbstractAppenderFactory> factoryOf(const std::string& className) const;
    CreatedAppender create(const Util::Properties& properties, const std::string& name);
    Appender* putIntoService(CreatedAppender created);
    CreatedByKeys createdByKeys();
    std::vector<Appender*> inService() const;
    Appender* firstAppender() const;

    /// Held for each change of a table, so that it is consistent in a forked child, and for reads.
    mutable Platform::CriticalSection tablesLock_{Platform::AWAITED_BY_FORK};
    std::map<std::string, boost::shared_ptr<AbstractAppenderFactory>>
        factories_ ZAV_LOG_GUARDED_BY(tablesLock_);
    CreatedAppenders createdAppenders_ ZAV_LOG_GUARDED_BY(tablesLock_);
};

} // namespace Log
} // namespace ZAV
