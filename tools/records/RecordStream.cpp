#include "records/RecordStream.h"

#include "records/TextLines.h"

#include <algorithm>
#include <utility>

namespace ZAV {
namespace Tools {

void RecordStream::append(LogFile file) {
    waiting_.push_back(std::move(file));
}

bool RecordStream::next(Ending ending) {
    hasFields_ = false;
    if (!read(ending)) {
        return false;
    }
    if (record_.hasTime) {
        observeTime();
    }
    return true;
}

/// Where reading begins in an hour that occurs twice, the records before tell which of the two it is.
void RecordStream::observeTime() {
    observe(record_);
    if (knowsPast_) {
        return;
    }
    knowsPast_ = true;
    if (clock_.comesTwice()) {
        clock_ = ZonedClock();
        RecordReader reader(current_->log.file, 0, current_->log.layout);
        Record past;
        while (reader.next(past) && past.end <= current_->log.offset) {
            if (past.hasTime) {
                observe(past);
            }
        }
        observe(record_);
    }
}

void RecordStream::observe(const Record& record) {
    if (record.structured != nullptr && record.structured->instant()) {
        clock_.observe(record.time(), *record.structured->instant());
    } else {
        clock_.observe(record.time());
    }
}

/// A local time that goes back because its hour occurs twice is no earlier point in time.
std::int64_t RecordStream::place() {
    if (!record_.hasTime) {
        return INT64_MIN;
    }
    const std::string_view lowest =
        record_.isPart ? record_.time() : current_->reader.lowestFrom(record_.time());
    const std::int64_t own = clock_.microseconds();
    if (lowest == record_.time()) {
        return own;
    }
    ZonedClock later = clock_;
    later.observe(lowest);
    return std::min(own, later.microseconds());
}

bool RecordStream::read(Ending ending) {
    for (;;) {
        if (current_ && current_->reader.next(record_)) {
            return true;
        }
        if (current_ && current_->reader.isInterrupted()) {
            return false; // what was read may be an incomplete record, and later files must wait for this one
        }
        const bool hasEnded = current_ && current_->log.file.hasEnded();
        const bool isOver = ending == Ending::FINAL || hasMoreFiles() || hasEnded;
        const bool isSettled = bytesSeen() == settledAt_;
        if (current_ && (isOver || isSettled) && current_->reader.takeRest(record_, isOver)) {
            return true;
        }
        if (current_) {
            keepProblem(current_->log.path, current_->reader.problem());
        }
        if (!goToNextFile()) {
            return false;
        }
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
    if (record_.structured != nullptr) {
        fields_ = record_.structured->fields();
    } else if (record_.hasTime || hasHeader()) {
        const std::string_view lines = record_.hasTime ? record_.lines : current_->reader.header();
        fields_ = parseRecord(lines, current_->detector.layoutFor(record_, current_->reader));
        fields_.message = fields_.text;
    }
    if (!record_.hasTime) {
        fields_.message = fields_.text = record_.lines;
        fields_.values = nullptr; // which follow the text that this one continues
    }
    return fields_;
}

std::string RecordStream::takeProblem() {
    return std::exchange(problem_, std::string());
}

/// \return false if no further one can be read
bool RecordStream::goToNextFile() {
    while (hasMoreFiles()) {
        LogFile next = std::move(waiting_.front());
        waiting_.pop_front();
        std::string problem;
        if (openRolled(next, problem)) {
            if (bytesSeen() > 0) {
                left_ = Left{std::move(current_->log), fileCount_};
            }
            current_ = std::make_unique<OpenFile>(std::move(next));
            ++fileCount_;
            settledAt_ = 0;
            knowsPast_ = current_->log.offset == 0 || !current_->log.file.isSeekable();
            return true;
        }
        keepProblem(next.path, problem);
    }
    return false;
}

void RecordStream::keepProblem(const std::string& path, const std::string& problem) {
    const std::string line = path + ": " + problem;
    if (!problem.empty() && problem_.find(line) == std::string::npos) {
        problem_ += (problem_.empty() ? "" : "\n") + line;
    }
}

} // namespace Tools
} // namespace ZAV
