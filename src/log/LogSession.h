#pragma once

#include "zav-util/Export.h"

#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// The library's life in the scope of an object, so that nobody forgets its end:
///
///     int main() {
///         const ZAV::Log::LogSession session("app.properties");
///         ...
///     }
///
/// Without a session or `LogManager::init` there is no appender, and nobody sees what the program logs, not
/// even its errors. A session that finds the library initialised leaves its configuration alone, and ends
/// nothing.
///
/// While one lives that has initialised it, standard error is told of an appender that fails:
/// "zav-log: appender NAME: REASON", when it fails for the first time, and for the first time after it has
/// written again. Nothing is said while a listener of the command "EXCEPTION" is registered, which hears of
/// each message.
class ZAV_LOG_API LogSession {
public:
    /// Calls `LogManager::init` with a property file.
    /// \throw what `LogManager::init` throws
    explicit LogSession(const std::string& fileName);

    /// Calls `LogManager::init` with properties.
    /// \throw what `LogManager::init` throws
    explicit LogSession(const Util::Properties& properties);

    /// If this session initialised the library: has what is queued written (`LogManager::flush`), then calls
    /// `LogManager::finish`. Not for a thread that is inside an appender or a command listener.
    ~LogSession();

    LogSession(const LogSession&) = delete;
    LogSession& operator=(const LogSession&) = delete;

private:
    const bool hasInitialised_;
};

} // namespace Log
} // namespace ZAV
