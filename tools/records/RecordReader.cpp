#include "records/RecordReader.h"

#include "platform/StopSignal.h"

#include <algorithm>
#include <cstring>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::size_t LONGEST_HEADER = 4096; // of the line whose beginning is kept for what follows it

} // namespace

RecordReader::RecordReader(const LogContent& file, std::uint64_t offset)
    : file_(file), offset_(offset), buffer_(BLOCK) {}

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
    const bool tornBehindItsTime =
        line_ != begin_ && startsWithTime(std::string_view(buffer_.data() + line_, end_ - line_));
    const std::size_t end = withUnfinishedLine && !tornBehindItsTime ? end_ : line_;
    if (end == begin_) {
        return false;
    }
    emit(record, end);
    rememberHeader(record);
    continues_ = true;
    return true;
}

/// Goes from line to line until one begins with a time. `line_` is then its begin, and the end of the record.
bool RecordReader::findEnd() {
    for (;;) {
        const std::string_view ahead(buffer_.data() + line_, end_ - line_);
        if (line_ != begin_ && startsWithTime(ahead) && ahead.size() > TIME_STAMP_LENGTH) {
            return true;
        }
        const void* lineFeed = std::memchr(buffer_.data() + searched_, '\n', end_ - searched_);
        if (lineFeed == nullptr) {
            searched_ = end_;
            return false;
        }
        line_ = static_cast<std::size_t>(static_cast<const char*>(lineFeed) - buffer_.data()) + 1;
        searched_ = line_;
    }
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
    record.hasTime = !isInLine_ && startsWithTime(lines);
    record.isContinuation = !record.hasTime && continues_;
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
    record.lines = withoutCarriageReturns(lines);
    continues_ = false;
    begin_ = end;
    line_ = end;
    searched_ = std::max(searched_, end);
}

std::string_view RecordReader::lowestFrom(std::string_view time) {
    if (ahead().substr(0, TIME_STAMP_LENGTH) >= time) { // as a rule
        return time;
    }
    if (offset_ + begin_ <= lowest_) { // within the run of falling times that an earlier record has begun
        return std::string_view(buffer_.data() + (lowest_ - offset_), TIME_STAMP_LENGTH);
    }
    std::string_view lowest = time;
    for (std::size_t line = begin_; line < end_;) {
        const std::string_view ahead(buffer_.data() + line, end_ - line);
        if (startsWithTime(ahead)) {
            if (ahead.substr(0, TIME_STAMP_LENGTH) >= lowest) {
                break;
            }
            lowest = ahead.substr(0, TIME_STAMP_LENGTH);
            lowest_ = offset_ + line;
        }
        line += std::min(ahead.find('\n'), ahead.size() - 1) + 1;
    }
    return lowest;
}

/// A part ends behind a line, if it can, and never between a CR and its LF. A line that it cuts goes on for
/// at least one byte, so that what follows can end it.
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
