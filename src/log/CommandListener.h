#pragma once

#include "zav-util/Export.h"

#include <string>

namespace ZAV {
namespace Log {

/// Receives commands of the names that it is registered under with `LogManager::registerCommandListener`.
class ZAV_LOG_API CommandListener {
public:
    CommandListener() = default;
    CommandListener(const CommandListener&) = default;
    CommandListener& operator=(const CommandListener&) = default;

    /// Takes the listener off the command bus. That is a net, not a licence: a command of another thread may
    /// still reach what the derived class has destroyed by then.
    virtual ~CommandListener();

    /// Called in the thread that issues the command, while the command bus is locked: commands come one at a
    /// time.
    ///
    /// It may issue further commands, look up and make loggers and log through them; while another thread is
    /// writing through that logger, the call is made when the command is delivered. It must not change levels
    /// or appenders of loggers, must not register listeners, and must not call `LogManager::init` or
    /// `finish`. A listener of "EXCEPTION" must not log to an asynchronous appender that fails: each report
    /// would bring the next. What it throws ends the delivery and reaches the command's issuer.
    virtual void onCommand(const std::string& argument) = 0;
};

} // namespace Log
} // namespace ZAV
