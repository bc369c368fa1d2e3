#pragma once

#include "config/Appenders.h"
#include "config/LoggerLevels.h"
#include "log/Level.h"
#include "log/LogMessage.h"
#include "log/MessageType.h"
#include "zav-util/Properties.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// What becomes of the messages of one logger at one appender.
struct Route {
    std::string appender;
    std::string place;                          ///< where the appender writes
    std::string layout;                         ///< the layout of its lines, if the configuration names one
    std::optional<Log::Level::LogLevel> lowest; ///< the lowest level that is written; nothing if none is
    std::string reason;                         ///< why not more is written, or nothing at all
};

/// What becomes of one message at one appender.
struct Delivery {
    std::string appender;
    std::string place;
    std::string refusal; ///< why it is not written; empty if it is
};

/// A configured appender, with the filters that the library gives it.
class ExplainedAppender {
public:
    /// \param properties must outlive this object
    ExplainedAppender(const std::string& name, const Util::Properties& properties);

    const std::string& name() const { return name_; }
    std::string place() const { return place_.describe(); }

    /// \return the layout that the configuration names; empty if it leaves the choice to the appender's class
    std::string layout() const;

    /// \return why a message is not written; empty if it is
    std::string refusal(const Log::LogMessage& message) const;

private:
    std::string setting(const std::string& setting) const;

    std::string name_;
    const Util::Properties& properties_;
    AppenderFilters filters_;
    AppenderPlace place_;
};

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
