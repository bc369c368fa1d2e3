#include "log/LogMessage.h"

#include "log/text/PackedPairs.h"

#include <utility>

namespace ZAV {
namespace Log {

LogMessage::LogMessage(std::string loggerName, Util::TimeUtils::Time time, Level::LogLevel level,
                       std::string text, int line, std::string file, MessageType type)
    : loggerName_(std::move(loggerName)), time_(time), level_(level), text_(std::move(text)), line_(line),
      file_(std::move(file)), type_(type), messageSize_(text_.size()) {}

LogMessage::Pairs LogMessage::getValues() const {
    return listPairs(values_, false);
}

LogMessage::Pairs LogMessage::getContext() const {
    return listPairs(context_, true);
}

} // namespace Log
} // namespace ZAV
