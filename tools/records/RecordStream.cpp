#include "records/RecordStream.h"

#include "records/LineParser.h"

#include <utility>

namespace ZAV {
namespace Tools {

void RecordStream::append(LogFile file) {
    waiting_.push_back(std::move(file));
}

bool RecordStream::next(Ending ending) {
    hasFields_ = false;
    for (;;) {
        if (current_ && current_->reader.next(record_)) {
            return true;
        }
        const bool isOver = ending == Ending::FINAL || hasMoreFiles();
        const bool isSettled = bytesSeen() == settledAt_;
        if (current_ && (isOver || isSettled) && current_->reader.takeRest(record_, isOver)) {
            return true;
        }
        if (current_) {
            keepProblem();
        }
        if (!hasMoreFiles()) {
            return false;
        }
        goToNextFile();
    }
}

void RecordStream::leaveFile() {
    current_->reader.stopReading();
}

const Fields& RecordStream::fields() {
    if (hasFields_) {
        return fields_;
    }
    hasFields_ = true;
    fields_ = Fields();
    if (record_.hasTime) {
        fields_ = parseRecord(record_.lines, current_->detector.layoutFor(record_));
        return fields_;
    }
    if (hasHeader()) {
        fields_ = parseRecord(current_->reader.header(), current_->detector.layoutFor(record_));
    }
    fields_.text = record_.lines;
    return fields_;
}

std::string RecordStream::takeProblem() {
    return std::exchange(problem_, std::string());
}

void RecordStream::goToNextFile() {
    current_ = std::make_unique<OpenFile>(std::move(waiting_.front()));
    waiting_.pop_front();
    ++fileCount_;
    settledAt_ = 0;
}

void RecordStream::keepProblem() {
    if (!current_->reader.problem().empty()) {
        problem_ = current_->log.path + ": " + current_->reader.problem();
    }
}

} // namespace Tools
} // namespace ZAV
