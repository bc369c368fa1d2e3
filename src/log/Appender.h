#pragma once

/// \file
/// A destination for messages that the application implements itself:
///
///     #include "log/LogLine.h"
///     #include "log/LoggerFactory.h"
///     #include <iostream>
///
///     class ConsoleAppender : public ZAV::Log::Appender {
///     public:
///         ConsoleAppender() : Appender("console") {}
///
///     private:
///         void doOutput(const ZAV::Log::LogMessage& message) override {
///             std::clog << ZAV::Log::formatLogLine(message) + '\n';
///         }
///     };
///
///     int main() {
///         ConsoleAppender console;
///         ZAV::Log::Logger& root = ZAV::Log::LoggerFactory::getRootLogger();
///         root.addAppender(&console);
///         root.error("no configuration found");
///         root.removeAppender(&console);
///     }

#include "log/MessageFilter.h"
#include "zav-util/Export.h"

#include <boost/shared_ptr.hpp>
#include <list>
#include <string>

namespace ZAV {
namespace Log {

class LogMessage;
struct AppenderOptions;

/// A destination of log messages. An application derives its own and implements `doOutput`, adds it with
/// `Logger::addAppender`, and keeps it alive until `Logger::removeAppender` has returned.
class ZAV_LOG_API Appender {
public:
    /// Filters in the order in which they are applied; ownership is shared.
    using Filters = std::list<boost::shared_ptr<MessageFilter>>;

    /// \param name unique among the appenders, and not the name of a command
    /// \param synchronous whether the logging thread writes the messages
    /// \param filters applied in their order; if there are none, every message is written
    explicit Appender(const std::string& name, bool synchronous = true, const Filters& filters = Filters());

    /// For a class that is registered with `LogManager::registerAppenderClass`: takes `name`, `synchronous`
    /// and `filters` from the options.
    explicit Appender(const AppenderOptions& options);

    /// Unregisters every command listener whose command name equals the appender's name.
    virtual ~Appender();
    Appender(const Appender&) = delete;
    Appender& operator=(const Appender&) = delete;

    const std::string& getName() const noexcept { return name_; }

    /// \return true if the logging thread writes the messages; false if they go through the queue of the
    ///         asynchronous dispatcher, which serves the appenders of the configuration and those that were
    ///         passed to `LogManager::addAsynchronousAppender`
    bool isSynchronous() const noexcept { return synchronous_; }

    /// Writes a message in the calling thread, if all filters accept it.
    ///
    /// An exception from `doOutput` becomes the command "EXCEPTION" with a report as its argument. An
    /// exception from a filter, or from a listener of that command, reaches the caller. A listener that logs
    /// may cause another failure; that one is reported too, up to eight reports deep.
    void output(const LogMessage& message);

protected:
    /// Writes one message. A synchronous appender may be called by several threads at once, each of which
    /// holds the lock of its logger; an asynchronous one is called by one thread at a time, without a
    /// logger's lock.
    ///
    /// It may log, change the levels of loggers, and add or remove appenders, including itself; an appender
    /// that has removed itself is not called again. If it logs to a logger that another thread is using, that
    /// message and every later one of this thread get their time at once, but are written only when the
    /// logging call that led here ends.
    /// \throw LogException to have its text reported; any other exception is reported without a text
    virtual void doOutput(const LogMessage& message) = 0;

private:
    friend class AppenderRegistry; // reads the level from the filters

    std::string name_;
    bool synchronous_;
    Filters filters_;
};

} // namespace Log
} // namespace ZAV
