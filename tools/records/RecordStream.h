#pragma once

#include "inputs/LogContent.h"
#include "inputs/LogFiles.h"
#include "records/Layout.h"
#include "records/Record.h"
#include "records/RecordReader.h"
#include "records/ZonedClock.h"

#include <cstddef>
#include <cstdint>
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
        FINAL,  ///< at its current end; an unterminated last line counts
        GROWING ///< a last record is held back until the file has not grown for a while
    };

    /// Adds a file, to be read after those before it.
    void append(LogFile file);

    /// Advances to the next record.
    /// \return false if there is none now, or none in what was read before the process was asked to end
    bool next(Ending ending);

    /// Says that some time has passed. A last record of whole lines is returned then, unless the file has
    /// grown by the next call of `next`.
    void settle() { settledAt_ = bytesSeen(); }

    /// Stops reading the current file, which has changed under its reader, so that `next` goes to the next
    /// one.
    void leaveFile();

    /// \return the record that `next` advanced to, valid until it is called again
    const Record& record() const { return record_; }

    /// \return the fields of that record; those of a continuation are its record's, except for the text
    const Fields& fields();

    /// \return the point in time by which the record is merged with those of other streams: its own, or that of the
    ///         next record of its file if that is earlier. Records without a time come before all others: the
    ///         first lines of a file, and continuations.
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
        std::size_t number; ///< the `fileCount` while it was read
    };

    /// \return the last one that was not empty, since the last call; nothing if there is none
    std::optional<Left> takeLeft() { return std::exchange(left_, std::nullopt); }

    /// \return how many files have been started
    std::size_t fileCount() const { return fileCount_; }

    /// \return true if the input is a pipe and was read to its end
    bool hasEnded() const { return current_ && current_->log.file.hasEnded() && !isPending(); }

    /// \return true if files wait after the one that is being read
    bool hasMoreFiles() const { return !waiting_.empty(); }

    /// \return true if whole lines are held back that only need time to pass
    bool isPending() const { return current_ && current_->reader.hasWholeLines(); }

    /// \return how far the current file was read; 0 without one
    std::uint64_t bytesSeen() const { return current_ ? current_->reader.bytesSeen() : 0; }

    /// \return what could not be read since the last call, and why, one line each; empty if all could
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
    std::uint64_t settledAt_ = 0; ///< how far the current file had been read at the last `settle`
    std::string problem_;
};

} // namespace Tools
} // namespace ZAV
