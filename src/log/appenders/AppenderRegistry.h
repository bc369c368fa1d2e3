#pragma once

#include "log/AppenderStatus.h"
#include "log/appenders/AppenderFactory.h"
#include "platform/CriticalSection.h"
#include "platform/NeverDestroyed.h"

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

/// An appender in service, and what it was made from.
struct CreatedAppender {
    std::unique_ptr<Appender> appender;
    std::string className;
    Util::Properties keys; ///< "appender.<name>" and all that begin with "appender.<name>."
};
using CreatedAppenders = std::list<CreatedAppender>;

/// The appenders of another configuration, which are to take the places of those in service.
struct AppenderExchange {
    CreatedAppenders created; ///< one that stays has no appender here yet; after the change, what has left
    std::vector<CreatedAppender*> inTable; ///< beside each of these the one that stays, or null
    std::vector<Appender*> before;         ///< all that were in service
    std::vector<Appender*> after;          ///< all that will be, in the order of their creation
    std::vector<Appender*> leaving;        ///< those before that are not among those after
    std::vector<Appender*> staying;
    std::vector<Appender*> coming;
};

/// Makes the appenders that a configuration declares, owns them and takes them down again.
///
/// What puts appenders into service or takes them out of it is called by one thread at a time, which the lock
/// of the life cycle sees to.
class AppenderRegistry : public Platform::NeverDestroyed<AppenderRegistry> {
public:
    /// \param factory owned from now on; an earlier factory of that class name is destroyed
    void registerFactory(const std::string& className, AbstractAppenderFactory* factory);

    /// Registers a class of the application.
    /// \throw LogException if there is such a class
    void registerClass(const std::string& className, RegisteredClassFactory::Maker maker);

    /// Puts an appender into service: attaches it to every logger, and to the dispatcher if it is
    /// asynchronous.
    /// \param appender owned from now on
    /// \param className what the configuration calls it
    /// \throw LogException if an appender of that name is in service; the new one is destroyed by then
    void registerAppender(Appender* appender, const std::string& className);

    /// Makes every appender that the properties declare by a key "appender.<name>".
    /// \throw LogException for an unknown class name, a name that is declared twice, or a bad setting; the
    ///        appenders made by then stay in service
    void initAppenders(const Util::Properties& properties);

    /// Makes every appender that the properties declare, unless there is one whose keys are the same, which
    /// stays. Nothing else changes yet.
    /// \throw what `initAppenders` would throw; what was made is destroyed by then
    AppenderExchange prepareExchange(const Util::Properties& properties);

    /// Has appenders that are new in service see to the files that earlier ones have left.
    static void tidyUp(const std::vector<Appender*>& appenders);

    /// Puts the appenders of an exchange into the table, in one step with what a function does.
    /// \param apply has the loggers use them. If it throws, nothing has changed
    void exchange(AppenderExchange& exchange, const std::function<void()>& apply);

    /// Takes the level that a command has lowered back to the configured one.
    static void restoreLevel(const Appender& appender);

    /// \return whether a command has lowered the level of an appender
    static bool hasLoweredLevel(const Appender& appender);

    /// \return what the appenders in service are like at this moment, in the order of their creation. It waits
    ///         for nothing, so an appender or a listener may call it.
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

    /// Held for each step that changes a table, so that a forked child finds it whole, and to look at one.
    mutable Platform::CriticalSection tablesLock_{Platform::AWAITED_BY_FORK};
    std::map<std::string, boost::shared_ptr<AbstractAppenderFactory>>
        factories_ ZAV_LOG_GUARDED_BY(tablesLock_);
    CreatedAppenders createdAppenders_ ZAV_LOG_GUARDED_BY(tablesLock_);
};

} // namespace Log
} // namespace ZAV
