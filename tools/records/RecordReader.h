#pragma once

#include "inputs/LogContent.h"
#include "records/Record.h"
#include "records/StructuredLines.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Tools {

/// Splits a file into records. It reads large blocks and returns views into them, so that a record needs no
/// memory of its own. A record longer than `LONGEST_RECORD` comes in several parts.
class RecordReader {
public:
    static constexpr std::size_t BLOCK = 128 * 1024;
    static constexpr std::size_t LONGEST_RECORD = StructuredLines::LONGEST;

    /// Reads lines of the text layouts.
    /// \param file must outlive the reader
    explicit RecordReader(const LogContent& file);

    /// \param file must outlive the reader
    /// \param offset where to begin
    RecordReader(const LogContent& file, std::uint64_t offset, LineForm form);

    /// Gives the next record that is followed by another one.
    /// \param record is valid until the next call
    /// \return false if the file currently holds no further one, or if `isInterrupted`
    bool next(Record& record);

    /// Gives what `next` left: the last record of the file, whose end is not marked by another one.
    /// \param withUnfinishedLine false leaves an unterminated last line unread
    /// \return false if nothing is left
    bool takeRest(Record& record, bool withUnfinishedLine);

    /// Follows the times of the next records in the buffer as long as each is earlier than the one before it.
    /// \param time of the last record
    /// \return the last of these times, or that of the record itself; valid until the next record
    std::string_view lowestFrom(std::string_view time);

    /// \return the first line of the record that a continuation belongs to; empty if that is unknown
    std::string_view header() const { return header_; }

    /// \return what was read of the file after the last record
    std::string_view ahead() const { return std::string_view(buffer_.data() + begin_, end_ - begin_); }

    /// \return how far the file has been read
    std::uint64_t bytesSeen() const { return offset_ + end_; }

    /// \return true if whole lines were read and not returned yet
    bool hasWholeLines() const { return begin_ != line_; }

    /// \return true if a stop request has ended reading amid a long stretch of the file, whose end is therefore unknown
    bool isInterrupted() const { return isInterrupted_; }

    /// Treats what was read as the whole file.
    void stopReading() { isStopped_ = true; }

    /// \return what of the file could not be read, and why; empty if all could
    const std::string& problem() const { return problem_; }

private:
    bool findEnd();
    bool findLineFeed();
    bool beginsRecord();
    std::string_view lineAt(std::size_t begin) const;
    bool fill();
    void makeRoom();
    void emit(Record& record, std::size_t end);
    void emitPart(Record& record);
    bool takeStructured(std::string_view lines, std::uint64_t offset);
    void noteUnreadable(std::string_view lines);
    std::string_view timeAt(std::size_t line);
    void rememberHeader(const Record& record);
    std::string_view withoutCarriageReturns(std::string_view lines);

    const LogContent& file_;
    std::uint64_t offset_; ///< of the buffer's first byte in the file
    std::vector<char> buffer_;
    std::size_t begin_ = 0;    ///< of the next record
    std::size_t line_ = 0;     ///< start of the first line whose end was not found yet
    std::size_t searched_ = 0; ///< no line feed is between `line_` and here
    std::size_t end_ = 0;      ///< of what was read
    bool continues_ = false;   ///< lines without a time belong to the record that was returned last
    bool isInLine_ = false;    ///< what was returned last ended within a line
    bool isStopped_ = false;
    bool isInterrupted_ = false;
    std::size_t sinceLastLook_ = 0; ///< bytes since the signals were checked
    std::uint64_t lowest_ = 0;      ///< offset of the line ahead where a run of falling times ends
    std::string lowestTime_;        ///< of that line
    StructuredLines structuredLines_;
    std::shared_ptr<StructuredRecord> structured_; ///< what was returned last, or what that continues
    std::string header_;
    std::string normalised_;
    std::string problem_;
};

} // namespace Tools
} // namespace ZAV
