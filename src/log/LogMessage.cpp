#include "log/LogMessage.h"

#include <utility>

namespace ZAV {
namespace Log {

LogMessage::LogMessage(std::string loggerName, Util::TimeUtils::Time time, Level::LogLevel level,
                       std::string text, int line, std::string file, MessageType type)
    : loggerName_(std::move(loggerName)), time_(time), level_(level), text_(std::move(text)), line_(line),
      file_(std::move(file)), type_(type) {}

} // namespace Log
} // namespace ZAV
