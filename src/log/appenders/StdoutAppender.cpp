#include "log/appenders/StdoutAppender.h"

#include "log/layout/LineEscaping.h"
#include "log/message/MessageFields.h"
#include "platform/StandardStreams.h"

namespace ZAV {
namespace Log {

StdoutAppender::StdoutAppender(const AppenderValues& values, const Filters& filters)
    : Appender(values.name, !values.asynchronous, filters), stream_(values.stream), escape_(values.escape) {}

/// The line and its end are one write, so that lines of different threads never mix.
void StdoutAppender::doOutput(const LogMessage& message) {
    std::string line;
    appendWholeLine(line, message, appendLogLine, escape_);
    Platform::writeToStream(*stream_, line);
}

} // namespace Log
} // namespace ZAV
