#include "log/appenders/StdoutAppender.h"

#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Terminal.h"

namespace ZAV {
namespace Log {

StdoutAppender::StdoutAppender(const AppenderValues& values, const Filters& filters)
    : Appender(values.name, !values.asynchronous, filters), stream_(values.stream),
      layout_(values.layoutOr(LayoutName::PLAIN)) {}

/// The line and its line end are one write, so that lines of different threads never interleave.
void StdoutAppender::doOutput(const LogMessage& message) {
    std::string line;
    appendWholeLine(line, message, *layout_);
    threadRecord().failedWrites += Platform::writeToStream(*stream_, line) ? 0 : 1;
}

} // namespace Log
} // namespace ZAV
