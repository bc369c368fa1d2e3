#pragma once

#include "log/Level.h"
#include "zav-util/Properties.h"

#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

class ControlClient;

/// The current levels of a running program, from its `ControlServer`. If there are too many loggers or
/// appenders, only the first ones are kept, which is reported on standard error.
class RunningLevels {
public:
    /// \throw Failure if the program does not answer
    explicit RunningLevels(const std::string& address);

    /// Gives the appenders of a configuration the levels that they have in the program, and reports on
    /// standard error those that it does not have.
    void applyTo(Util::Properties& properties) const;

    /// Gives the loggers of this process the levels that they have in the program. One that the program does
    /// not have gets what it would inherit there.
    void applyToLoggers() const;

private:
    struct Named {
        std::string name;
        std::optional<Log::Level::LogLevel> level; ///< nothing for an appender without one
    };

    std::vector<Named> read(ControlClient& client, const std::string& request, int wordsAfterName) const;
    const Named* findAppender(const std::string& name) const;

    const std::string address_;
    std::vector<Named> loggers_; ///< in tree order
    std::vector<Named> appenders_;
};

} // namespace Tools
} // namespace ZAV
