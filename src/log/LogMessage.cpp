#include "log/LogMessage.h"

namespace ZAV {
namespace Log {

LogMessage::LogMessage(const std::string& loggerName, Util::TimeUtils::Time time, Level::LogLevel level,
                       const std::string& text, int line, const std::string& file, MessageType type)
    : loggerName_(loggerName), time_(time), level_(level), text_(text), line_(line), file_(file),
      type_(type) {}

} // namespace Log
} // namespace ZAV
