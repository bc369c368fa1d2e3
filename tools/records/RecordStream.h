#pragma once

#include "inputs/LogFile.h"
#include "records/Fields.h"
#include "records/LayoutDetector.h"
#include "records/Record.h"
#include "records/RecordReader.h"
#include "records/ZonedClock.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ZAV {
namespace Tools {

/// The records of one input: of a file, or of the files of a series one after another.
class RecordStream {
public:
    /// How the last file ends.
    enum class Ending {
        FINAL,  ///< where it ends now; a last line without an end is a line
        GROWING ///< a last record is held back until the file has not grown for a while
    };

    /// Adds a file that is read when those before it are at their end.
    void append(LogFile file);

    /// Goes to the next record.
    /// \return false if there is none now, or none in what was read before the process was asked to end
    bool next(Ending ending);

    /// Says that a while has passed. A last record of whole lines is given then, unless the file has grown
    /// when it is asked for.
    void settle() { settledAt_ = bytesSeen(); }

    /// Reads no further in the current file, which has changed behind its reader's back, and goes to the next
    /// one.
    void leaveFile();

    /// \return the record that `next` went to, until it is called again
    const Record& record() const { return record_; }

    /// \return what that record says; of a continuation, what the record says that it belongs to, but for the text
    const Fields& fields();

    /// \return the point in time by which the record is merged with those of other streams. It is the record's own, or
    /// that of the next one of its file where that is earlier. What has no time comes before all else: the
    /// first lines of a file, and what belongs to the record before it.
    std::int64_t place();

    /// \return the clock at the time of the last record that has one
    const ZonedClock& clock() const { return clock_; }

    /// \return true for a continuation of a record whose first line is known
    bool hasHeader() const { return record_.isContinuation && !current_->reader.header().empty(); }

    /// \return the path of the file that the record is from
    const std::string& source() const { return current_->log.path; }

    /// \return the file that is being read; null before the first one
    const LogFile* file() const { return current_ ? &current_->log : nullptr; }

    /// A file that was read to its end.
    struct Left {
        LogFile log;
        std::size_t number; ///< the `fileCount` of its time
    };

    /// \return the last one that held anything since this was asked last; nothing if there is none
    std::optional<Left> takeLeft() { return std::exchange(left_, std::nullopt); }

    /// \return how many files were begun
    std::size_t fileCount() const { return fileCount_; }

    /// \return true if the input is a pipe and was read to its end
    bool hasEnded() const { return current_ && current_->log.file.hasEnded() && !isPending(); }

    /// \return true if files wait behind the one that is being read
    bool hasMoreFiles() const { return !waiting_.empty(); }

    /// \return true if a record is held back that needs no more than time
    bool isPending() const { return current_ && current_->reader.hasWholeLines(); }

    /// \return how far the current file was read; 0 without one
    std::uint64_t bytesSeen() const { return current_ ? current_->reader.bytesSeen() : 0; }

    /// \return what could not be read, and why, since this was asked last, a line each; empty if all could
    std::string takeProblem();

private:
    struct OpenFile {
        explicit OpenFile(LogFile opened)
            : log(std::move(opened)), reader(log.file, log.offset, log.layout),
              detector(log.file, log.layout.layout) {}
        LogFile log;
        RecordReader reader;
        LayoutDetector detector;
    };

    bool read(Ending ending);
    void observeTime();
    void observe(const Record& record);
    bool goToNextFile();
    void keepProblem(const std::string& path, const std::string& problem);

    std::deque<LogFile> waiting_;
    std::unique_ptr<OpenFile> current_;
    std::optional<Left> left_;
    Record record_;
    ZonedClock clock_;
    bool knowsPast_ = true; ///< the clock has seen the records before the current one
    Fields fields_;
    bool hasFields_ = false;
    std::size_t fileCount_ = 0;
    std::uint64_t settledAt_ = 0; ///< how far the current file had been read
    std::string problem_;
};

} // namespace Tools
} // namespace ZAV
