#include "log/appenders/SimpleFileAppender.h"

#include "log/LogException.h"
#include "log/layout/LineEscaping.h"
#include "log/message/MessageFields.h"
#include "platform/Files.h"
#include "platform/OutputFile.h"

namespace ZAV {
namespace Log {

SimpleFileAppender::SimpleFileAppender(const std::string& name, bool synchronous, const Filters& filters,
                                       const std::string& dir, const std::string& file,
                                       const FileOptions& options)
    : Appender(name, synchronous, filters), givenPath_(dir + "/" + file),
      path_(Platform::absolutePath(dir) + "/" + file), options_(options) {}

/// An asynchronous appender has one caller at a time and takes the lock all the same, so that a thread that
/// forks can wait until no line is half written.
void SimpleFileAppender::doOutput(const LogMessage& message) {
    const Platform::ScopedLock lock(criticalSection_);
    Platform::OutputFile file;
    file.open(path_, Platform::OutputFile::APPEND, options_.rules);
    if (file.hasFailed()) {
        throw LogException("Failed to open file " + givenPath_ + ". Are you sure that the directory exists?");
    }
    std::string line;
    appendWholeLine(line, message, appendLogLineWithProcess, options_.escape);
    file.write(line);
}

} // namespace Log
} // namespace ZAV
