#pragma once

#include "config/LoggerLevels.h"
#include "explain/ExplainedAppender.h"
#include "explain/Route.h"
#include "log/MessageType.h"
#include "zav-util/Properties.h"

#include <deque>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Where a configuration sends messages of one type, according to the library's own loggers and filters. Only
/// one object may exist at a time, since the loggers are those of the process.
class Explanation {
public:
    /// \param address of a running program, to use its levels; empty for those of the file
    /// \throw Failure with the text that `init` would throw, or if the program does not answer
    Explanation(const std::string& fileName, Log::MessageType type,
                const std::string& address = std::string());

    /// \return the loggers that the file names, the root first
    const std::vector<std::string>& loggers() const { return levels_.named(); }

    /// \return the appenders, in the order in which `init` makes them
    const std::deque<ExplainedAppender>& appenders() const { return appenders_; }

    /// \return the full name that the messages of a logger show
    std::string fullName(const std::string& logger) const { return levels_.fullName(logger); }

    /// \return what each appender gets from a logger, which is given by its full name, as below
    std::vector<Route> routesOf(const std::string& logger) const;

    /// \return why the logger stops a message; empty if it lets it through
    std::string stopOf(const std::string& logger, Log::Level::LogLevel level) const;

    /// \return what becomes of a message at each appender
    std::vector<Delivery> deliveriesOf(const std::string& logger, Log::Level::LogLevel level) const;

private:
    void takeLevelsFrom(const std::string& address);
    Log::LogMessage makeMessage(const std::string& logger, Log::Level::LogLevel level) const;
    std::string refusal(const ExplainedAppender& appender, const std::string& logger,
                        Log::Level::LogLevel level) const;
    Route routeOf(const std::string& logger, const ExplainedAppender& appender) const;

    Log::MessageType type_;
    Util::Properties properties_;
    LoggerLevels levels_;
    std::deque<ExplainedAppender> appenders_;
};

} // namespace Tools
} // namespace ZAV
