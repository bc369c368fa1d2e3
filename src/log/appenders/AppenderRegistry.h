#pragma once

#include "log/AppenderStatus.h"
#include "log/appenders/AppenderFactory.h"
#include "platform/CriticalSection.h"

#include <boost/shared_ptr.hpp>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

/// Makes the appenders that a configuration declares, owns them and takes them down again.
///
/// Its long lock comes before all others of the library: nothing takes it while it holds a logger's lock, a
/// lock of the dispatcher or the command bus. No lock is held while an appender is made, which an application
/// may do.
class AppenderRegistry {
public:
    /// Never destroyed, since threads may still log while the process ends.
    static AppenderRegistry& instance();

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

    /// \return what the appenders in service are like at this moment, in the order of their creation. It waits
    ///         for nothing, so an appender or a listener may call it.
    std::vector<AppenderStatus> statuses() const;

    /// Takes all appenders out of service and destroys them.
    void destroyAppenders();

private:
    struct Created {
        std::unique_ptr<Appender> appender;
        std::string className;
    };
    using CreatedAppenders = std::list<Created>;

    AppenderRegistry() = default;

    boost::shared_ptr<AbstractAppenderFactory> factoryOf(const std::string& className) const;
    Appender* createAppender(const Util::Properties& properties, const std::string& name);
    bool hasAppender(const std::string& name) const;
    Appender* firstAppender() const;

    /// Held while an appender is put into service or taken out of it: the outermost lock of the library.
    Platform::CriticalSection createdAppendersLock_;

    /// Held in addition for each step that changes a table, so that a forked child finds it whole, and alone
    /// to look at one.
    mutable Platform::CriticalSection tablesLock_{Platform::AWAITED_BY_FORK};
    std::map<std::string, boost::shared_ptr<AbstractAppenderFactory>>
        factories_ ZAV_LOG_GUARDED_BY(tablesLock_);
    CreatedAppenders createdAppenders_ ZAV_LOG_GUARDED_BY(tablesLock_);
};

} // namespace Log
} // namespace ZAV
