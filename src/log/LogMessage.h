#pragma once

#include "log/Level.h"
#include "log/MessageType.h"
#include "zav-util/Export.h"
#include "zav-util/TimeUtils.h"

#include <string>

namespace ZAV {
namespace Log {

/// The record of one logging event. Its fields never change, so any number of threads may read it. An
/// appender or a filter must not keep a reference to it beyond its call; it may keep a copy.
class ZAV_LOG_API LogMessage {
public:
    /// \param loggerName full name of the logger; "root" for the root logger
    /// \param time when the logger accepted the event
    /// \param line source line; 0 or less if none is given
    /// \param file source file; empty if none is given
    LogMessage(std::string loggerName, Util::TimeUtils::Time time, Level::LogLevel level, std::string text,
               int line, std::string file, MessageType type);

    LogMessage(const LogMessage&) = default; // and no move, which would change the other one
    LogMessage& operator=(const LogMessage&) = delete;
    ~LogMessage() = default;

    const std::string& getLoggerName() const noexcept { return loggerName_; }
    Util::TimeUtils::Time getTime() const noexcept { return time_; }
    Level::LogLevel getLevel() const noexcept { return level_; }
    const std::string& getText() const noexcept { return text_; }
    int getLine() const noexcept { return line_; }
    const std::string& getFile() const noexcept { return file_; }
    MessageType getType() const noexcept { return type_; }

private:
    friend class ReusedMessage; // fills an object again that nobody holds any more

    std::string loggerName_;
    Util::TimeUtils::Time time_;
    Level::LogLevel level_;
    std::string text_;
    int line_;
    std::string file_;
    MessageType type_;
};

} // namespace Log
} // namespace ZAV
