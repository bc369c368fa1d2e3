#include "log/appenders/LiveFileAppender.h"

#include "log/LogException.h"
#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "platform/Files.h"

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

LiveFileAppender::LiveFileAppender(const AppenderValues& values, const Filters& filters,
                                   const std::string& liveName)
    : BatchAppender(values.name, !values.asynchronous, filters, values.writesBatches), values_(values),
      layout_(values.layoutOr(LayoutName::PLAIN)), folder_(Platform::absolutePath(values.dir)),
      livePath_(pathOf(liveName)), owner_(livePath_), openTime_(Time::now()), liveName_(liveName),
      lastLook_(openTime_) {}

/// An appender removed during a round may still have unwritten lines.
LiveFileAppender::~LiveFileAppender() {
    endRound();
}

void LiveFileAppender::outputLine(const LogMessage& message) {
    recover();
    checkFile();
    appendWholeLine(beginLine(), message, *layout_);
    prepareFile(message);
    currentSize_ += line().size();
    if (keepsLines()) {
        keepLine();
        return;
    }
    write(line());
    checkFile();
}

/// Reopens a file that has failed, or whose path no longer names it. A failure here supersedes an older one.
void LiveFileAppender::recover() {
    if (values_.recovery == Time() || !isTimeToLook()) {
        return;
    }
    lastLook_ = Time::now();
    const bool isGone = outputFileStream_.isOpen() && !outputFileStream_.isAt(livePath_);
    if (isGone) {
        writeKept();
        checkFile();
    }
    if (outputFileStream_.hasFailed() || isGone) {
        continueFile();
    }
}

/// If the clock was set back, the unsigned difference is huge, so the check happens at once.
bool LiveFileAppender::isTimeToLook() const {
    return Time::now().microseconds() - lastLook_.microseconds() >= values_.recovery.microseconds();
}

void LiveFileAppender::followFile() {
    owner_.follow();
    if (!outputFileStream_.isOpen() || !outputFileStream_.isAt(livePath_)) {
        continueFile();
    }
}

void LiveFileAppender::continueFile() {
    outputFileStream_.close();
    openLiveFile(Platform::OutputFile::APPEND);
    currentSize_ = outputFileStream_.size() + keptSize();
    lastWritten_ = Time(outputFileStream_.lastWritten(), Util::TimeUtils::USEC);
    if (outputFileStream_.endsInPartialLine(livePath_, values_.fileRules())) {
        currentSize_ += write("\n");
        checkFile();
    }
}

void LiveFileAppender::openLiveFile(Platform::OutputFile::Mode mode) {
    lastLook_ = Time::now();
    outputFileStream_.open(livePath_, mode, values_.fileRules());
    if (outputFileStream_.hasFailed()) {
        throw LogException("Unable to open the file: " + values_.dir + "/" + liveName_);
    }
    openTime_ = lastLook_;
}

/// Another process may have moved the live file since the first of these lines was buffered.
void LiveFileAppender::writeLines(std::string_view text, std::size_t& written) {
    if (owner_.isBehind() && !owner_.mayRotate()) {
        followFile();
    }
    checkFile();
    written = write(text);
    checkFile();
}

/// A line that does not reach the file, on a full disk for example, is a failure, which callers report by
/// `checkFile`.
std::size_t LiveFileAppender::write(std::string_view text) {
    const std::size_t taken = writeBlocking(outputFileStream_, text);
    if (outputFileStream_.hasFailed()) {
        lastLook_ = Time::now();
    }
    return taken;
}

void LiveFileAppender::checkFile() const {
    if (outputFileStream_.hasFailed()) {
        throw LogException("outputFileStream_.fail()");
    }
}

std::string LiveFileAppender::pathOf(const std::string& fileName) const {
    return folder_ + "/" + fileName;
}

} // namespace Log
} // namespace ZAV
