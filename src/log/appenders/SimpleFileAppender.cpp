#include "log/appenders/SimpleFileAppender.h"

#include "log/LogException.h"
#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "platform/OutputFile.h"

namespace ZAV {
namespace Log {

SimpleFileAppender::SimpleFileAppender(const std::string& name, bool synchronous, const Filters& filters,
                                       const std::string& dir, const std::string& file)
    : Appender(name, synchronous, filters), dir_(dir), file_(file) {}

void SimpleFileAppender::doOutput(const LogMessage& message) {
    const Platform::ScopedLock lock(criticalSection_);
    append(message);
}

void SimpleFileAppender::append(const LogMessage& message) const {
    const std::string path = dir_ + "/" + file_;
    Platform::OutputFile file;
    file.open(path, Platform::OutputFile::APPEND);
    if (file.hasFailed()) {
        throw LogException("Failed to open file " + path + ". Are you sure that the directory exists?");
    }
    std::string line;
    appendLogLineWithProcess(line, message);
    line += '\n';
    file.write(line);
}

} // namespace Log
} // namespace ZAV
