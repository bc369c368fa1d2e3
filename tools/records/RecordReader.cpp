#include "records/RecordReader.h"

#include "platform/Terminal.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::size_t LONGEST_HEADER = 4096; // of a record's first line, as kept for its continuations

LineForm textLines() {
    LineForm form;
    form.hasJson = false;
    return form;
}

} // namespace

RecordReader::RecordReader(const LogContent& file) : RecordReader(file, 0, textLines()) {}

RecordReader::RecordReader(const LogContent& file, std::uint64_t offset, LineForm form)
    : file_(file), offset_(offset), buffer_(BLOCK), structuredLines_(std::move(form)) {}

bool RecordReader::next(Record& record) {
    while (!findEnd()) {
        if (end_ - begin_ >= LONGEST_RECORD) {
            emitPart(record);
            return true;
        }
        if (!fill()) {
            return false;
        }
    }
    emit(record, line_);
    return true;
}

bool RecordReader::takeRest(Record& record, bool withUnfinishedLine) {
    const std::string_view unfinished(buffer_.data() + line_, end_ - line_);
    const bool isRecord =
        withUnfinishedLine && line_ != begin_ &&
        (startsWithTime(unfinished) || (structuredLines_.mayBegin(unfinished) &&
                                        structuredLines_.read(unfinished, offset_ + line_) != nullptr));
    const std::size_t end = withUnfinishedLine && !isRecord ? end_ : line_;
    if (end == begin_) {
        return false;
    }
    emit(record, end);
    rememberHeader(record);
    continues_ = true;
    return true;
}

/// Goes from line to line until one begins a record. `line_` is then its start, and the end of the record
/// before it.
bool RecordReader::findEnd() {
    for (;;) {
        if (line_ != begin_ && beginsRecord()) {
            return true;
        }
        if (!findLineFeed()) {
            return false;
        }
        line_ = ++searched_;
    }
}

/// Looks for the end of the line at `line_`, and moves `searched_` there.
bool RecordReader::findLineFeed() {
    const void* lineFeed = std::memchr(buffer_.data() + searched_, '\n', end_ - searched_);
    searched_ = lineFeed == nullptr
                    ? end_
                    : static_cast<std::size_t>(static_cast<const char*>(lineFeed) - buffer_.data());
    return lineFeed != nullptr;
}

/// \return whether the line at `line_` begins a record, as far as it has been read; a machine-readable one must be
///         whole
bool RecordReader::beginsRecord() {
    const std::string_view ahead(buffer_.data() + line_, end_ - line_);
    if (startsWithTime(ahead) && ahead.size() > TIME_STAMP_LENGTH) {
        return true;
    }
    return structuredLines_.mayBegin(ahead) && findLineFeed() &&
           structuredLines_.read(lineAt(line_), offset_ + line_) != nullptr;
}

/// \return the line without its end, as far as it has been read
std::string_view RecordReader::lineAt(std::size_t begin) const {
    const std::string_view ahead(buffer_.data() + begin, end_ - begin);
    return ahead.substr(0, ahead.find('\n'));
}

bool RecordReader::fill() {
    if (sinceLastLook_ >= LONGEST_RECORD) {
        sinceLastLook_ = 0;
        isInterrupted_ = Platform::isStopRequested();
    }
    if (isStopped_ || isInterrupted_) {
        return false;
    }
    makeRoom();
    const std::int64_t count =
        file_.readAt(bytesSeen(), buffer_.data() + end_, buffer_.size() - end_, problem_);
    if (count <= 0) {
        return false;
    }
    end_ += static_cast<std::size_t>(count);
    sinceLastLook_ += static_cast<std::size_t>(count);
    return true;
}

void RecordReader::makeRoom() {
    if (begin_ > 0 && buffer_.size() - end_ < BLOCK / 2) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        offset_ += begin_;
        line_ -= begin_;
        searched_ -= begin_;
        end_ -= begin_;
        begin_ = 0;
    }
    if (buffer_.size() - end_ < BLOCK / 2) {
        buffer_.resize(buffer_.size() * 2);
    }
}

void RecordReader::emit(Record& record, std::size_t end) {
    std::string_view lines(buffer_.data() + begin_, end - begin_);
    const bool isStructured = !isInLine_ && takeStructured(lines, offset_ + begin_);
    record.hasTime = isStructured || (!isInLine_ && startsWithTime(lines));
    record.isContinuation = !record.hasTime && continues_;
    noteUnreadable(lines);
    if (!isStructured && !record.isContinuation) {
        structured_.reset();
    }
    record.structured = structured_.get();
    record.isPart = false;
    record.isCutInLine = false;
    record.end = offset_ + end;
    isInLine_ = lines.back() != '\n';
    if (!isInLine_) {
        lines.remove_suffix(1);
        if (!lines.empty() && lines.back() == '\r') {
            lines.remove_suffix(1);
        }
    }
    if (isStructured) {
        const std::size_t first = std::min(lines.find('\n'), lines.size());
        if (first != lines.size()) {
            structured_->addLines(withoutCarriageReturns(lines.substr(first + 1)));
        }
        record.lines = structured_->shown();
    } else {
        record.lines = withoutCarriageReturns(lines);
    }
    continues_ = false;
    begin_ = end;
    line_ = end;
    searched_ = std::max(searched_, end);
}

/// Reports a line that looks machine-readable and was too long to be parsed.
void RecordReader::noteUnreadable(std::string_view lines) {
    for (std::string_view rest = lines; rest.size() >= LONGEST_RECORD - 1;) {
        const std::size_t size = std::min(rest.find('\n'), rest.size());
        const bool isFirst = rest.size() == lines.size();
        if (size >= LONGEST_RECORD - 1 && structuredLines_.mayBegin(rest) && !(isFirst && isInLine_) &&
            !startsWithTime(rest)) {
            problem_ = "A line of more than 4 MiB is shown as it stands, whatever its layout";
        }
        rest.remove_prefix(std::min(size + 1, rest.size()));
    }
}

/// \return whether the lines begin with a machine-readable one, which `structured_` then holds
bool RecordReader::takeStructured(std::string_view lines, std::uint64_t offset) {
    if (!structuredLines_.mayBegin(lines)) {
        return false;
    }
    std::shared_ptr<StructuredRecord> structured =
        structuredLines_.take(lines.substr(0, lines.find('\n')), offset);
    if (structured == nullptr) {
        return false;
    }
    structured_ = std::move(structured);
    return true;
}

/// \return the time of a line in the buffer; empty if it has none
std::string_view RecordReader::timeAt(std::size_t line) {
    const std::string_view ahead(buffer_.data() + line, end_ - line);
    if (structuredLines_.mayBegin(ahead)) {
        const std::shared_ptr<StructuredRecord> structured =
            structuredLines_.read(lineAt(line), offset_ + line);
        if (structured != nullptr) {
            return structured->time(); // still cached after the return
        }
    }
    return startsWithTime(ahead) ? ahead.substr(0, TIME_STAMP_LENGTH) : std::string_view();
}

std::string_view RecordReader::lowestFrom(std::string_view time) {
    const bool isText = !structuredLines_.mayBegin(ahead());
    if (isText && ahead().substr(0, TIME_STAMP_LENGTH) >= time) { // the usual case
        return time;
    }
    if (offset_ + begin_ <= lowest_) { // within the run of falling times that an earlier record has begun
        return lowestTime_;
    }
    std::string_view lowest = time;
    for (std::size_t line = begin_; line < end_; line += lineAt(line).size() + 1) {
        const std::string_view next = timeAt(line);
        if (!next.empty() && next >= lowest) {
            break;
        }
        if (!next.empty()) {
            lowestTime_ = next;
            lowest = lowestTime_;
            lowest_ = offset_ + line;
        }
    }
    return lowest;
}

/// A part ends after a line, if possible, and never between a CR and its LF. A line that is split leaves at
/// least one byte to the next part, which can then end it.
void RecordReader::emitPart(Record& record) {
    std::size_t end = line_ > begin_ ? line_ : end_ - 1;
    if (buffer_[end - 1] == '\r') {
        --end;
    }
    emit(record, end);
    record.isPart = true;
    record.isCutInLine = isInLine_;
    rememberHeader(record);
    continues_ = true;
}

void RecordReader::rememberHeader(const Record& record) {
    if (!record.isContinuation) {
        const std::size_t length = std::min(record.lines.find('\n'), LONGEST_HEADER);
        header_ = record.hasTime ? record.lines.substr(0, length) : std::string_view();
    }
}

std::string_view RecordReader::withoutCarriageReturns(std::string_view lines) {
    if (std::memchr(lines.data(), '\r', lines.size()) == nullptr) {
        return lines;
    }
    normalised_.clear();
    for (std::size_t place = 0; place < lines.size(); ++place) {
        const bool endsLine = lines[place] == '\r' && place + 1 < lines.size() && lines[place + 1] == '\n';
        if (!endsLine) {
            normalised_ += lines[place];
        }
    }
    return normalised_;
}

} // namespace Tools
} // namespace ZAV
