#include "log/appenders/BatchAppender.h"

#include "log/LogException.h"
#include "log/commands/FailureReport.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Process.h"

#include <algorithm>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// Most memory kept for the text between two lines written outside a round.
constexpr std::size_t LARGEST_KEPT_LINE = std::size_t{64} * 1024;

} // namespace

BatchAppender::BatchAppender(const std::string& name, bool synchronous, const Filters& filters,
                             bool writesBatches)
    : Appender(name, synchronous, filters), writesBatches_(writesBatches && !synchronous) {}

void BatchAppender::beginRound() noexcept {
    const ScopedLock lock(criticalSection_);
    lines_.clear();
    firstKept_ = 0;
    failure_ = nullptr;
    hasFailed_ = false;
    isInRound_ = true;
    roundGeneration_ = Platform::forkGeneration();
}

void BatchAppender::endRound() noexcept {
    const ScopedLock lock(criticalSection_);
    writeKept();
    isInRound_ = false;
}

void BatchAppender::close() {
    const ScopedLock lock(criticalSection_);
    endRound();
    closeFile();
}

BatchAppender::Failed BatchAppender::takeFailed() noexcept {
    const ScopedLock lock(criticalSection_);
    hasFailed_ = false;
    Failed failed{std::move(lines_), std::move(failure_)};
    lines_.clear();
    return failed;
}

/// An asynchronous appender has one caller at a time, but takes the lock so that a forking thread can wait
/// until no line is half written.
void BatchAppender::doOutput(const LogMessage& message) {
    const ScopedLock lock(criticalSection_);
    try {
        outputLine(message);
    } catch (const LogException&) {
        writeKept();
        if (!hasFailed()) {
            throw;
        }
        lines_.push_back({number_, 0});   // after those still to be reported
        threadRecord().keptLineOf = this; // it was not written
    }
}

std::size_t BatchAppender::writeBlocking(Platform::OutputFile& file, std::string_view text) {
    const Platform::BlockingIoScope unchanged(criticalSection_);
    return file.write(text);
}

bool BatchAppender::keepsLines() const noexcept {
    return isInRound_ && roundGeneration_ == Platform::forkGeneration();
}

/// Drops the remains of a line that was abandoned.
std::string& BatchAppender::beginLine() {
    const std::size_t usual = keepsLines() ? 2 * LARGEST_BATCH : LARGEST_KEPT_LINE;
    if (lines_.empty() && text_.capacity() > usual) {
        text_ = std::string();
    }
    text_.resize(keptSize());
    return text_;
}

void BatchAppender::keepLine() {
    if (keptSize() == 0) {
        firstKept_.store(number_, std::memory_order_relaxed);
    }
    lines_.push_back({number_, text_.size()});
    threadRecord().keptLineOf = this;
    if (text_.size() >= LARGEST_BATCH) {
        writeKept();
    }
}

/// A partially written line counts as failed.
void BatchAppender::writeKept() noexcept {
    const std::size_t size = keptSize();
    if (size == 0 || !keepsLines()) {
        return;
    }
    std::size_t written = 0;
    try {
        writeLines(std::string_view(text_).substr(0, size), written);
        written = size;
        FailureNotice::noteWritten(this);
    } catch (const std::exception&) {
        failure_ = std::current_exception();
    }
    text_.erase(0, size);
    firstKept_ = 0;
    lines_.erase(lines_.begin(), std::find_if(lines_.begin(), lines_.end(),
                                              [written](const Line& line) { return line.end > written; }));
    for (Line& line : lines_) {
        line.end = 0; // its text was erased
    }
    hasFailed_ = !lines_.empty();
}

} // namespace Log
} // namespace ZAV
