#include "log/LogLine.h"

#include "log/layout/PlainLayout.h"
#include "log/message/MessageFields.h"

namespace ZAV {
namespace Log {

std::string formatLogLine(const LogMessage& message) {
    std::string line;
    appendLogLine(line, message);
    return line;
}

std::string formatLogLineWithProcess(const LogMessage& message) {
    std::string line;
    appendLogLineWithProcess(line, message);
    return line;
}

} // namespace Log
} // namespace ZAV
