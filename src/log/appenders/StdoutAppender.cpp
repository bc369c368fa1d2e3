#include "log/appenders/StdoutAppender.h"

#include "log/layout/LineEscaping.h"
#include "log/message/MessageFields.h"
#include "platform/StandardStreams.h"

namespace ZAV {
namespace Log {

StdoutAppender::StdoutAppender(const std::string& name, bool synchronous, const Filters& filters,
                               std::ostream* stream, bool escape)
    : Appender(name, synchronous, filters), stream_(stream), escape_(escape) {}

/// The line and its end are one write, so that lines of different threads never mix.
void StdoutAppender::doOutput(const LogMessage& message) {
    std::string line;
    appendWholeLine(line, message, appendLogLine, escape_);
    Platform::writeToStream(*stream_, line);
}

} // namespace Log
} // namespace ZAV
