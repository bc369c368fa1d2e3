#pragma once

/// \file
/// Receives commands, among them the reports of appenders that fail:
///
///     #include "log/LogManager.h"
///     #include "log/LogSession.h"
///     #include <iostream>
///
///     class FailureListener : public ZAV::Log::CommandListener {
///     public:
///         void onCommand(const std::string& report) override { std::cerr << report + '\n'; }
///     };
///
///     int main() {
///         FailureListener failures; // outlives the session, whose last flush may still call it
///         ZAV::Log::LogManager::registerCommandListener("EXCEPTION", &failures);
///         const ZAV::Log::LogSession session("app.properties");
///         // ...
///     }

#include "zav-util/Export.h"

#include <atomic>
#include <string>

namespace ZAV {
namespace Log {

/// Receives the commands whose names it is registered for with `LogManager::registerCommandListener`.
class ZAV_LOG_API CommandListener {
public:
    CommandListener() noexcept = default;
    /// A copy is not registered, and assignment does not change the registrations of its target.
    CommandListener(const CommandListener&) noexcept {}
    CommandListener& operator=(const CommandListener&) noexcept { return *this; }

    /// Removes the listener from the command bus, if it was ever registered, and waits at most two seconds
    /// for a callback in another thread to return. Do not rely on this: the derived class is destroyed
    /// already, and a command may still reach it. Unregister the listener first.
    virtual ~CommandListener();

    /// The callback. It runs in the thread that issues the command, under the lock of the command bus, so
    /// commands are delivered one at a time.
    ///
    /// It may log, look up and create loggers, change their levels, expiration and appenders, and issue
    /// further commands. If it logs to a logger that another thread is using, that message and every later
    /// one of this thread get their time at once, but are written only when the command has been delivered.
    /// It must not register or unregister listeners, and must not call `LogManager::init` or `finish`. An
    /// exception from it ends the delivery and reaches whoever issued the command.
    ///
    /// A listener for "EXCEPTION" may be called in the consumer thread, where signals are blocked; a program
    /// that it starts there inherits the blocked signals. It may log to an appender that fails: that failure
    /// is reported too, up to eight reports deep, and at most 1024 reports in one call.
    virtual void onCommand(const std::string& argument) = 0;

private:
    friend class CommandBus;
    std::atomic<bool> wasRegistered_{false};
};

} // namespace Log
} // namespace ZAV
