#pragma once

#include "zav-util/Export.h"

#include <atomic>
#include <string>

namespace ZAV {
namespace Log {

/// Receives commands of the names that it is registered under with `LogManager::registerCommandListener`.
class ZAV_LOG_API CommandListener {
public:
    CommandListener() noexcept = default;
    /// The copy is not registered, and registrations of an assigned one stay as they are.
    CommandListener(const CommandListener&) noexcept {}
    CommandListener& operator=(const CommandListener&) noexcept { return *this; }

    /// Takes the listener off the command bus, if it was ever registered, and waits, for at most two seconds,
    /// while another thread is calling it. Do not rely on it: by then the derived class is destroyed already,
    /// and a command may still reach it. Unregister the listener first.
    virtual ~CommandListener();

    /// Called in the thread that issues the command, while the command bus is locked: commands come one at a
    /// time.
    ///
    /// It may log, look up and make loggers, change their levels, expiration and appenders, and issue further
    /// commands. A message for a logger through which another thread is writing, and every message behind it,
    /// is stamped at once and written when the command has been delivered. It must not register or unregister
    /// listeners, and must not call `LogManager::init` or `finish`. What it throws ends the delivery and
    /// reaches the command's issuer.
    ///
    /// A listener of "EXCEPTION" may be called in the consumer thread, in which signals are blocked; a
    /// program that it starts there inherits that. It may log to an appender that fails: that failure is
    /// reported as well, eight reports deep, and no more than 1024 reports in one call.
    virtual void onCommand(const std::string& argument) = 0;

private:
    friend class CommandBus;
    std::atomic<bool> wasRegistered_{false};
};

} // namespace Log
} // namespace ZAV
