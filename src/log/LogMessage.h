#pragma once

#include "log/Level.h"
#include "log/MessageType.h"
#include "zav-util/Export.h"
#include "zav-util/TimeUtils.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ZAV {
namespace Log {

/// The record of one logging event. Its fields never change, so any number of threads may read it. An
/// appender or a filter must not keep a reference to it beyond its call; it may keep a copy.
class ZAV_LOG_API LogMessage {
public:
    /// Pairs of a key and a value, the value as the text layouts show it, but unquoted.
    using Pairs = std::vector<std::pair<std::string, std::string>>;

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
    /// \return the whole text: what was logged, and the pairs of `ZAV_LOGV_` behind it
    const std::string& getText() const noexcept { return text_; }
    /// \return the text without the pairs
    std::string getMessage() const { return text_.substr(0, messageSize_); }
    /// \return the pairs of `ZAV_LOGV_`, in their order, also a key that comes twice
    Pairs getValues() const;
    /// \return the pairs of the thread's `LogContext` objects, outer ones first, without those that others hide
    Pairs getContext() const;
    /// \return the system's id of the thread that logged the message; 0 in one that an application makes
    std::uint64_t getThread() const noexcept { return thread_; }
    int getLine() const noexcept { return line_; }
    const std::string& getFile() const noexcept { return file_; }
    MessageType getType() const noexcept { return type_; }

private:
    friend struct MessageFields; // which it is made from
    friend class ReusedMessage;  // fills an object again that nobody holds any more

    std::string loggerName_;
    Util::TimeUtils::Time time_;
    Level::LogLevel level_;
    std::string text_;
    int line_;
    std::string file_;
    MessageType type_;
    std::size_t messageSize_; ///< of the part of the text in front of the pairs
    std::string values_;      ///< packed, as the context is
    std::string context_;
    std::uint64_t thread_ = 0;
};

} // namespace Log
} // namespace ZAV
