#pragma once

#include "log/Level.h"
#include "zav-util/Properties.h"

#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

class ControlClient;

/// The levels that a running program has at this moment, by its `ControlServer`. Of a huge number of loggers
/// or appenders the first ones alone are known, which is said on standard error.
class RunningLevels {
public:
    /// \throw Failure if the program does not answer
    explicit RunningLevels(const std::string& address);

    /// Gives the appenders of a configuration the levels that they have in the program, and says on standard
    /// error which of them it does not have.
    void applyTo(Util::Properties& properties) const;

    /// Gives the loggers of this process the levels that they have in the program. One that the program does
    /// not have gets what it would inherit there.
    void applyToLoggers() const;

private:
    struct Named {
        std::string name;
        std::optional<Log::Level::LogLevel> level; ///< nothing for an appender without one
    };

    std::vector<Named> read(ControlClient& client, const std::string& request, int wordsBehindName) const;
    const Named* findAppender(const std::string& name) const;

    const std::string address_;
    std::vector<Named> loggers_; ///< in the order of the tree
    std::vector<Named> appenders_;
};

} // namespace Tools
} // namespace ZAV
