#pragma once

#include "log/MessageFilter.h"
#include "zav-util/Export.h"

#include <boost/shared_ptr.hpp>
#include <list>
#include <string>

namespace ZAV {
namespace Log {

class LogMessage;
struct AppenderOptions;

/// A destination of log messages. An application derives its own by supplying `doOutput`, attaches it with
/// `Logger::addAppender` and keeps it alive until `Logger::removeAppender` has returned.
class ZAV_LOG_API Appender {
public:
    /// Filters in the order in which they are asked; shared with whoever made them.
    using Filters = std::list<boost::shared_ptr<MessageFilter>>;

    /// \param name unique among the appenders; a name that no command has
    /// \param synchronous whether to write in the thread that logs
    /// \param filters asked in their order; without one every message is written
    explicit Appender(const std::string& name, bool synchronous = true, const Filters& filters = Filters());

    /// For a class that is registered by `LogManager::registerAppenderClass`: takes name, synchronous and
    /// filters.
    explicit Appender(const AppenderOptions& options);

    /// Unregisters every command listener whose command name equals the appender's name.
    virtual ~Appender();
    Appender(const Appender&) = delete;
    Appender& operator=(const Appender&) = delete;

    const std::string& getName() const noexcept { return name_; }

    /// \return true if messages are written in the thread that logs; false if they go through the queue of the
    ///         asynchronous dispatcher, which serves the appenders of the configuration and those of
    ///         `LogManager::addAsynchronousAppender`
    bool isSynchronous() const noexcept { return synchronous_; }

    /// Writes a message that all filters accept, in the calling thread.
    ///
    /// A failure of `doOutput` becomes the command "EXCEPTION" with a report as its argument. What a listener
    /// of that command or a filter throws reaches the caller. A listener that logs in answer may bring about
    /// another failure, which is reported as well, eight reports deep.
    void output(const LogMessage& message);

protected:
    /// Writes one message. A synchronous appender is called by any number of threads at once, each holding
    /// the lock of the logger that logged the message; an asynchronous one by one thread at a time, without
    /// such a lock.
    ///
    /// It may log, change the levels of loggers, and add and remove appenders, itself included: once an
    /// appender has removed itself it is not called again. A message for a logger through which another
    /// thread is writing, and every message behind it, is stamped at once and written when the call that led
    /// here is over.
    /// \throw LogException to have its text reported; any other exception is reported without a text
    virtual void doOutput(const LogMessage& message) = 0;

private:
    friend class AppenderRegistry; // which tells the level in the filters

    std::string name_;
    bool synchronous_;
    Filters filters_;
};

} // namespace Log
} // namespace ZAV
