#pragma once

#include "inputs/LogFile.h"
#include "records/Fields.h"
#include "records/LayoutDetector.h"
#include "records/Record.h"
#include "records/RecordReader.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <utility>

namespace ZAV {
namespace Tools {

/// The records of one input: of a file, or of the files of a series one after another.
class RecordStream {
public:
    /// How the last file ends.
    enum class Ending {
        FINAL,   ///< where it ends now; a last line without an end is a line
        GROWING, ///< a last record is held back, for what is still being written
        SETTLED  ///< a last record of whole lines is given: no more of it will come
    };

    /// Adds a file that is read when those before it are at their end.
    void append(LogFile file);

    /// Goes to the next record.
    /// \return false if there is none now
    bool next(Ending ending);

    /// \return the record that `next` went to, until it is called again
    const Record& record() const { return record_; }

    /// \return what that record says; of a continuation, what the record says that it belongs to, but for the text
    const Fields& fields();

    /// \return true for a continuation of a record whose first line is known
    bool hasHeader() const { return record_.isContinuation && !current_->reader.header().empty(); }

    /// \return the path of the file that the record is from
    const std::string& source() const { return current_->log.path; }

    /// \return the file that is being read; null before the first one
    const LogFile* file() const { return current_ ? &current_->log : nullptr; }

    /// \return true if files wait behind the one that is being read
    bool hasMoreFiles() const { return !waiting_.empty(); }

    /// \return true if something was read and is held back
    bool isPending() const { return current_ && current_->reader.isPending(); }

    /// \return how far the current file was read; 0 without one
    std::uint64_t bytesSeen() const { return current_ ? current_->reader.bytesSeen() : 0; }

    /// \return what could not be read, and why, since this was asked last; empty if all could
    std::string takeProblem();

private:
    struct OpenFile {
        explicit OpenFile(LogFile opened)
            : log(std::move(opened)), reader(log.file, log.offset), detector(log.file, log.layout) {}
        LogFile log;
        RecordReader reader;
        LayoutDetector detector;
    };

    void goToNextFile();
    void keepProblem();

    std::deque<LogFile> waiting_;
    std::unique_ptr<OpenFile> current_;
    Record record_;
    Fields fields_;
    bool hasFields_ = false;
    std::string problem_;
};

} // namespace Tools
} // namespace ZAV
