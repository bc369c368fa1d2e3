#include "log/appenders/SimpleFileAppender.h"

#include "log/LogException.h"
#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Files.h"

namespace ZAV {
namespace Log {

SimpleFileAppender::SimpleFileAppender(const AppenderValues& values, const Filters& filters)
    : BatchAppender(values.name, !values.asynchronous, filters, values.writesBatches), values_(values),
      layout_(values.layoutOr(LayoutName::PROCESS)),
      path_(Platform::absolutePath(values.dir) + "/" + values.file) {}

/// An appender removed during a round may still have unwritten lines.
SimpleFileAppender::~SimpleFileAppender() {
    endRound();
}

void SimpleFileAppender::outputLine(const LogMessage& message) {
    if (keepsLines()) {
        render(message);
        keepLine();
        return;
    }
    render(message);
    write(line());
}

void SimpleFileAppender::writeLines(std::string_view text, std::size_t& written) {
    write(text);
    written = text.size();
}

/// The file can end in an incomplete line only before the first write or after a failed one.
void SimpleFileAppender::write(std::string_view text) {
    Platform::OutputFile file;
    open(file);
    if (mayEndInPartialLine_ && file.endsInPartialLine(path_, values_.fileRules())) {
        writeBlocking(file, "\n");
    }
    writeBlocking(file, text);
    file.close();
    mayEndInPartialLine_ = file.hasFailed();
    threadRecord().failedWrites += file.hasFailed() ? 1 : 0;
}

void SimpleFileAppender::open(Platform::OutputFile& file) const {
    file.open(path_, Platform::OutputFile::APPEND, values_.fileRules());
    if (file.hasFailed()) {
        throw LogException("Failed to open file " + values_.dir + "/" + values_.file +
                           ". Are you sure that the directory exists?");
    }
}

void SimpleFileAppender::render(const LogMessage& message) {
    appendWholeLine(beginLine(), message, *layout_);
}

} // namespace Log
} // namespace ZAV
