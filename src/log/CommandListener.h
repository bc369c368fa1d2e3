#pragma once

#include "platform/Export.h"

#include <string>

namespace ZAV {
namespace Log {

/// Receives commands of the names that it is registered under with `LogManager::registerCommandListener`.
class ZAV_LOG_API CommandListener {
public:
    virtual ~CommandListener();

    /// Called in the thread that issues the command, while the command bus is locked: commands come one at a
    /// time.
    ///
    /// It may issue further commands and log through loggers that it already has. It must not register or
    /// unregister listeners, must not look loggers up or change their levels or appenders, and must not call
    /// `LogManager::init` or `finish`. What it throws ends the delivery and reaches the command's issuer.
    virtual void onCommand(const std::string& argument) = 0;
};

} // namespace Log
} // namespace ZAV
