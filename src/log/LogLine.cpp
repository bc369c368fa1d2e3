#include "log/LogLine.h"

#include "log/LogMessage.h"
#include "platform/Process.h"
#include "zav-util/Conversions.h"
#include "zav-util/SystemInformation.h"
#include "zav-util/TimeText.h"

namespace ZAV {
namespace Log {

namespace {

// Room for everything but the logger name and the text, so that most lines are built in one allocation.
constexpr std::size_t ROOM_FOR_FIELDS = 59;
constexpr std::size_t ROOM_FOR_FIELDS_WITH_PROCESS = 123;

/// The program stays the same, and asking the system for it costs as much as opening a file. Never destroyed,
/// since threads may still log while the process ends.
const std::string& programName() {
    static const std::string& name = *new std::string(Util::getProgramName());
    return name;
}

std::string startLine(const LogMessage& message, std::size_t roomForFields) {
    std::string line;
    line.reserve(message.getLoggerName().size() + message.getText().size() + roomForFields);
    Util::TimeUtils::appendTime(line, message.getTime());
    return line;
}

void appendField(std::string& line, const std::string& field) {
    line += ' ';
    line += field;
}

void appendLocation(std::string& line, const LogMessage& message) {
    const bool hasLine = message.getLine() > 0;
    if (!message.getFile().empty() || hasLine) {
        appendField(line, message.getFile());
    }
    if (hasLine) {
        line += ':';
        line += Util::toString(std::int64_t{message.getLine()});
    }
}

void appendMessage(std::string& line, const LogMessage& message) {
    appendField(line, message.getLoggerName());
    if (message.getType() == LOG) {
        appendLocation(line, message);
        appendField(line, Level::toString(message.getLevel()));
    }
    appendField(line, message.getText());
}

} // namespace

std::string formatLogLine(const LogMessage& message) {
    std::string line = startLine(message, ROOM_FOR_FIELDS);
    appendMessage(line, message);
    return line;
}

std::string formatLogLineWithProcess(const LogMessage& message) {
    std::string line = startLine(message, ROOM_FOR_FIELDS_WITH_PROCESS);
    appendField(line, programName());
    appendField(line, Util::toString(std::int64_t{Platform::processId()}));
    appendField(line, Util::getHostName());
    appendMessage(line, message);
    return line;
}

} // namespace Log
} // namespace ZAV
