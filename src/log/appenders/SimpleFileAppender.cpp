#include "log/appenders/SimpleFileAppender.h"

#include "log/LogException.h"
#include "log/layout/LineEscaping.h"
#include "log/message/MessageFields.h"
#include "platform/Files.h"

namespace ZAV {
namespace Log {

SimpleFileAppender::SimpleFileAppender(const std::string& name, bool synchronous, const Filters& filters,
                                       const std::string& dir, const std::string& file,
                                       const FileOptions& options)
    : BatchAppender(name, synchronous, filters, options.writesBatches), givenPath_(dir + "/" + file),
      path_(Platform::absolutePath(dir) + "/" + file), options_(options) {}

/// One that leaves amid a round has lines left.
SimpleFileAppender::~SimpleFileAppender() {
    endRound();
}

void SimpleFileAppender::outputLine(const LogMessage& message) {
    if (keepsLines()) {
        render(message);
        keepLine();
        return;
    }
    Platform::OutputFile file;
    open(file);
    render(message);
    file.write(line());
}

void SimpleFileAppender::writeLines(std::string_view text, std::size_t& written) {
    Platform::OutputFile file;
    open(file);
    file.write(text);
    written = text.size();
}

void SimpleFileAppender::open(Platform::OutputFile& file) const {
    file.open(path_, Platform::OutputFile::APPEND, options_.rules);
    if (file.hasFailed()) {
        throw LogException("Failed to open file " + givenPath_ + ". Are you sure that the directory exists?");
    }
}

void SimpleFileAppender::render(const LogMessage& message) {
    appendWholeLine(beginLine(), message, appendLogLineWithProcess, options_.escape);
}

} // namespace Log
} // namespace ZAV
