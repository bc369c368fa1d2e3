#pragma once

#include "filters/RecordFilter.h"
#include "follow/FilePlace.h"
#include "inputs/LogFiles.h"
#include "records/RecordStream.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ZAV {
namespace Tools {

/// An input that grows: a file or a series whose files are written, rotated, deleted, truncated and recreated
/// meanwhile.
class FollowedInput {
public:
    explicit FollowedInput(InputSpec spec) : spec_(std::move(spec)) {}

    /// Resumes at a place of an earlier process; called before the first `poll`.
    void resumeAt(const FilePlace& place) { resumedPlace_ = place; }

    /// Skips, of what is there at the first `poll`, what precedes the last `count` wanted records.
    /// \param filter must outlive the first `poll` that finds a file
    void beginNearEnd(const RecordFilter& filter, std::size_t count) {
        tailFilter_ = &filter;
        tailLength_ = count;
    }

    void beginAtStart() { tailFilter_ = nullptr; }

    /// Looks for files to read next, and appends them to the stream.
    /// \param notices receives messages for the user: what cannot be read, and where records may have been lost
    void poll(std::vector<std::string>& notices);

    /// Ends a round, before its records leave the process. From then on, changes to what was read are
    /// noticed, at the next `poll`.
    void settle();

    bool isStandardInput() const { return spec_.kind == InputSpec::STANDARD_INPUT; }

    /// \return true if no more records can come, as from a pipe without a writer
    bool hasEnded() const {
        return isStandardInput() && (stream_.hasEnded() || !problems_.empty() || !readProblem_.empty());
    }

    RecordStream& stream() { return stream_; }
    const RecordStream& stream() const { return stream_; }
    const std::string& path() const { return spec_.path; }

    /// Marks the stream's current record as dealt with.
    void commit();

    /// \return the place after all records that have been dealt with; none before the first file
    std::optional<FilePlace> place();

private:
    void openFirst(std::vector<std::string>& notices);
    void skipToResumedPlace(std::vector<LogFile>& files, std::vector<std::string>& notices);
    void reopenIfCut(std::vector<std::string>& notices);
    bool isCurrentLive() const;
    void appendNewerFiles(std::vector<std::string>& notices);
    std::vector<LogFile>::iterator findCurrent(std::vector<LogFile>& files) const;
    void leaveOutDone(std::vector<LogFile>& files) const;
    void leaveOutKnown(std::vector<LogFile>& files);
    void append(std::vector<LogFile> files);
    void noticeNew(std::vector<std::string>& notices, std::vector<std::string> problems);
    void noteLeft();
    std::string livePath() const;
    void warnOfLoss(std::vector<std::string>& notices, const std::string& reason) const;

    InputSpec spec_;
    InputSpec::Kind kind_ = InputSpec::FILE_OR_SERIES;
    RecordStream stream_;
    std::optional<FilePlace> resumedPlace_;
    const RecordFilter* tailFilter_ = nullptr; ///< null if the input is read from its start
    std::size_t tailLength_ = 0;
    std::optional<FilePlace> seen_;     ///< how far the current file was read at the end of the last round
    std::vector<FilePlace> done_;       ///< the ends of the last poll's files, which were read or will be
    std::set<std::string> knownRolled_; ///< paths of rolled files that were read, skipped or appended
    std::size_t committedFile_ = 0;     ///< the number of the file that the last committed record is from
    std::uint64_t committedEnd_ = 0;
    std::optional<FilePlace> before_; ///< the end of the file before the current one
    std::string readProblem_;
    std::vector<std::string> problems_; ///< found by the last poll
};

} // namespace Tools
} // namespace ZAV
