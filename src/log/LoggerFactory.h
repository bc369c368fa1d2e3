#pragma once

#include "log/Logger.h"
#include "zav-util/Export.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Hands out the loggers of the process. All operations may be called from any thread.
///
/// A name may be the path of a source file: only what follows its last "/" or "\" counts.
class ZAV_LOG_API LoggerFactory {
public:
    LoggerFactory& operator=(const LoggerFactory&) { return *this; }

    /// \return the root logger, whose name is "root"; it lives until the process ends
    static Logger& getRootLogger();

    /// \return the logger with that dotted name; it and its ancestors are created if they do not exist yet
    /// \throw LogException for a name of more than 1,000 components, of which no logger is made
    static Logger& getLogger(const std::string& name);

    /// \return the logger `name`, of which only the last path component counts, below `parentName`
    /// \throw LogException if the whole name has more than 1,000 components
    static Logger& getLogger(const std::string& parentName, const std::string& name);

    /// \return whether that logger exists; it is not created
    static bool loggerExists(const std::string& name);

    /// \return whether that logger exists; it is not created
    static bool loggerExists(const std::string& parentName, const std::string& name);

    /// \return the full names of all loggers but the root, parents before their children
    static std::vector<std::string> getLoggerNames();

    /// Applies the keys `logger.NAME.level` and `logger.NAME.expiration`, parents before their children.
    /// A bad value is reported on the standard error stream and leaves its setting as it was, and so is a
    /// name of more than 1,000 components. Each level issues the command "DynamicLogLevelFilterSoft"; a
    /// `std::exception` that a listener throws is reported in the same way, and anything else that it throws
    /// reaches the caller.
    static void initLoggers(const Util::Properties& properties);
};

} // namespace Log
} // namespace ZAV
