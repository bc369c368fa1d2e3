#include "log/appenders/StdoutAppender.h"

#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"

#include <ostream>

namespace ZAV {
namespace Log {

StdoutAppender::StdoutAppender(const std::string& name, bool synchronous, const Filters& filters,
                               std::ostream* stream)
    : Appender(name, synchronous, filters), stream_(stream) {}

/// The line and its end are one write, so that lines of different threads never mix.
void StdoutAppender::doOutput(const LogMessage& message) {
    std::string line;
    appendLogLine(line, message);
    line += '\n';
    stream_->write(line.data(), static_cast<std::streamsize>(line.size())).flush();
}

} // namespace Log
} // namespace ZAV
