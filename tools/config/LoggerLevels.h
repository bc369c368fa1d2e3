#pragma once

#include "log/Level.h"
#include "zav-util/Properties.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// \return whether the library accepts a logger of that name, which may be a path
bool isAcceptedLogger(const std::string& name);

/// The levels that the loggers have after `init`. They are stored in this process's loggers, so only the
/// object that was made last is valid.
class LoggerLevels {
public:
    /// Gives all loggers the levels of a configuration; suppresses what the library reports meanwhile.
    explicit LoggerLevels(const Util::Properties& properties);

    /// \param loggerName "root" for the root; a logger that the configuration does not name inherits its level
    Log::Level::LogLevel of(const std::string& loggerName) const;

    /// \param loggerName a full name, or a path as `LoggerFactory::getLogger` takes it
    /// \throw LogException for a name that is not accepted
    std::string fullName(const std::string& loggerName) const;

    /// \return the loggers that the keys of the configuration name, the root first, then in tree order
    const std::vector<std::string>& named() const { return named_; }

private:
    std::vector<std::string> named_;
};

} // namespace Tools
} // namespace ZAV
