#pragma once

#include "log/LogMessage.h"

#include <string>
#include <string_view>

namespace ZAV {
namespace Log {

class Logger;

/// \return whether two texts are the same one, not only alike
inline bool isSamePlace(std::string_view text, std::string_view other) {
    return text.data() == other.data() && text.size() == other.size();
}

/// What a message says, in texts that somebody else keeps. A message goes through the library in this form
/// until an appender needs the object.
struct MessageFields {
    MessageFields(std::string_view loggerNameText, Util::TimeUtils::Time moment, Level::LogLevel severity,
                  std::string_view messageText, int sourceLine, std::string_view sourceFile, MessageType kind,
                  const Logger* origin = nullptr)
        : loggerName(loggerNameText), time(moment), level(severity), text(messageText), line(sourceLine),
          file(sourceFile), type(kind), logger(origin) {}

    MessageFields(const LogMessage& message)
        : MessageFields(message.getLoggerName(), message.getTime(), message.getLevel(), message.getText(),
                        message.getLine(), message.getFile(), message.getType()) {}

    /// \throw std::bad_alloc
    LogMessage makeMessage() const {
        return LogMessage(std::string(loggerName), time, level, std::string(text), line, std::string(file),
                          type);
    }

    /// On the way to the appenders the logger's own string. It is never destroyed, so its address identifies
    /// the logger.
    std::string_view loggerName;
    Util::TimeUtils::Time time;
    Level::LogLevel level;
    std::string_view text;
    int line;
    std::string_view file;
    MessageType type;
    const Logger* logger; ///< that logged it; null in a message that an application makes
};

} // namespace Log
} // namespace ZAV
