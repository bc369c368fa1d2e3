#pragma once

/// \file
/// Runs the library for the duration of a scope; the usual way to start it.

#include "zav-util/Export.h"

#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Initialises the library, and shuts it down when it goes out of scope:
///
///     int main() {
///         const ZAV::Log::LogSession session("app.properties");
///         // ...
///     }
///
/// Without a session or `LogManager::init` there are no appenders but those that the program adds itself, and
/// whatever it logs is lost, even errors. If the library is initialised already, a session neither changes
/// its configuration nor shuts it down.
///
/// During the lifetime of a session that has initialised the library, a failing appender is reported on
/// standard error as "zav-log: appender NAME: REASON": once when it begins to fail, and again when it fails
/// after it has recovered. Nothing is reported there while a listener for the command "EXCEPTION" is
/// registered, which gets a report for each message.
class ZAV_LOG_API LogSession {
public:
    /// Calls `LogManager::init` with a property file.
    /// \throw what that throws
    explicit LogSession(const std::string& fileName);

    /// Calls `LogManager::init` with properties.
    /// \throw what that throws
    explicit LogSession(const Util::Properties& properties);

    /// Calls `LogManager::flush`, without a timeout, and `LogManager::finish`, if this session has
    /// initialised the library. It must not be called from an appender or a command listener.
    ~LogSession();

    LogSession(const LogSession&) = delete;
    LogSession& operator=(const LogSession&) = delete;

private:
    const bool hasInitialised_;
};

} // namespace Log
} // namespace ZAV
