#pragma once

/// \file
/// What an appender or a filter can read from a message:
///
///     std::string summary(const ZAV::Log::LogMessage& message) {
///         return ZAV::Log::Level::toString(message.getLevel()) + " from " + message.getLoggerName() + ": " +
///                message.getText();
///     }

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

/// One logged message with its properties. It is immutable, so several threads may read it at once. An
/// appender or a filter must not keep a reference to it after its call; it may keep a copy.
class ZAV_LOG_API LogMessage {
public:
    /// Pairs of a key and a value; values are as in the text layouts, but without quotes.
    using Pairs = std::vector<std::pair<std::string, std::string>>;

    /// \param loggerName full name of the logger; "root" for the root logger
    /// \param time when the logger accepted the message
    /// \param line source line; 0 or less if there is none
    /// \param file source file; empty if there is none
    LogMessage(std::string loggerName, Util::TimeUtils::Time time, Level::LogLevel level, std::string text,
               int line, std::string file, MessageType type);

    LogMessage(const LogMessage&) = default; // and no move, which would change its source
    LogMessage& operator=(const LogMessage&) = delete;
    ~LogMessage() = default;

    const std::string& getLoggerName() const noexcept { return loggerName_; }
    Util::TimeUtils::Time getTime() const noexcept { return time_; }
    Level::LogLevel getLevel() const noexcept { return level_; }
    /// \return the whole text: what was logged, followed by the pairs of `ZAV_LOGV_`
    const std::string& getText() const noexcept { return text_; }
    /// \return the text without the pairs
    std::string getMessage() const { return text_.substr(0, messageSize_); }
    /// \return the pairs of `ZAV_LOGV_`, in their order, including keys that occur twice
    Pairs getValues() const;
    /// \return the pairs of the thread's `LogContext` objects, outer ones first, without hidden ones
    Pairs getContext() const;
    /// \return the system's id of the logging thread; 0 in a message that the application constructed
    std::uint64_t getThread() const noexcept { return thread_; }
    int getLine() const noexcept { return line_; }
    const std::string& getFile() const noexcept { return file_; }
    MessageType getType() const noexcept { return type_; }

private:
    friend struct MessageFields; // constructs it
    friend class ReusedMessage;  // fills an object again that is no longer in use

    std::string loggerName_;
    Util::TimeUtils::Time time_;
    Level::LogLevel level_;
    std::string text_;
    int line_;
    std::string file_;
    MessageType type_;
    std::size_t messageSize_; ///< size of the text without the pairs
    std::string values_;      ///< packed, like the context
    std::string context_;
    std::uint64_t thread_ = 0;
};

} // namespace Log
} // namespace ZAV
