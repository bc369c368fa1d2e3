#pragma once

/// \file
/// Looks up a logger by its name. That takes a lock, so a logger that is used often is looked up once:
///
///     namespace {
///     ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("net.tcp");
///     }
///
///     void listen(int port) { logger.info("listening on port " + std::to_string(port)); }

#include "log/Logger.h"
#include "zav-util/Export.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Looks up and creates the loggers of the process. All functions may be called from any thread.
///
/// A name may be the path of a source file: only what follows its last `/` or `\` counts.
class ZAV_LOG_API LoggerFactory {
public:
    LoggerFactory& operator=(const LoggerFactory&) { return *this; }

    /// \return the root logger, whose name is "root"; valid until the process ends
    static Logger& getRootLogger();

    /// \return the logger with that dotted name; it and its ancestors are created if they do not exist yet
    /// \throw LogException if the name has more than 1,000 components; no logger is created then
    static Logger& getLogger(const std::string& name);

    /// \return the logger `name` below `parentName`; of a path only the last component counts
    /// \throw LogException if the whole name has more than 1,000 components
    static Logger& getLogger(const std::string& parentName, const std::string& name);

    /// \return whether that logger exists; it is not created
    static bool loggerExists(const std::string& name);

    /// \return whether that logger exists; it is not created
    static bool loggerExists(const std::string& parentName, const std::string& name);

    /// \return the full names of all loggers but the root, parents before their children
    static std::vector<std::string> getLoggerNames();

    /// Applies the keys `logger.NAME.level` and `logger.NAME.expiration`, parents before their children. An
    /// invalid value, or a name of more than 1,000 components, is reported on the standard error stream, and
    /// the setting is not changed. Each level issues the command "DynamicLogLevelFilterSoft"; a
    /// `std::exception` from a listener is reported in the same way, any other exception reaches the caller.
    static void initLoggers(const Util::Properties& properties);
};

} // namespace Log
} // namespace ZAV
