#pragma once

#include "log/appenders/SeriesOwner.h"
#include "log/async/BatchAppender.h"
#include "log/config/AppenderValues.h"
#include "platform/OutputFile.h"
#include "zav-util/FileUtils.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <deque>

namespace ZAV {
namespace Log {

/// Writes each message as one flushed line to a live file and keeps a bounded series of older files beside
/// it.
///
/// A file is named by the base name and one digit: 0 is the live file, 1 the most recent of the older ones.
/// The live file gives way to a new one when the next line would make it too large, or when it has been open
/// too long; each older file then moves up by one, and the one beyond the highest index is deleted.
///
/// A forked child only appends to the live file of the process that rotates it, see `SeriesOwner`. The
/// directory is never created; a relative one is taken from the one that the process is in when the appender
/// is made.
class FileAppender : public BatchAppender {
public:
    /// So that an index is always one digit.
    static constexpr std::uint64_t HIGHEST_FILE_NUMBER = 9;

    FileAppender(const AppenderValues& values, const Filters& filters);
    ~FileAppender() override;

    std::string fileName() const override { return Util::FileUtils::baseName(livePath_); }

protected:
    /// \throw LogException if the directory cannot be listed (the next message tries again), or if the live
    ///        file cannot be opened or written (every later message fails as well, until a recovery)
    void outputLine(const LogMessage& message) override ZAV_LOG_REQUIRES(criticalSection_);
    void writeLines(std::string_view text, std::size_t& written) override ZAV_LOG_REQUIRES(criticalSection_);
    void closeFile() override ZAV_LOG_REQUIRES(criticalSection_) { outputFileStream_.close(); }

private:
    void recover() ZAV_LOG_REQUIRES(criticalSection_);
    bool isTimeToLook() const ZAV_LOG_REQUIRES(criticalSection_);
    void prepareFile() ZAV_LOG_REQUIRES(criticalSection_);
    bool hasRoom() const ZAV_LOG_REQUIRES(criticalSection_);
    void followFile() ZAV_LOG_REQUIRES(criticalSection_);
    bool isTooOld() const ZAV_LOG_REQUIRES(criticalSection_);
    void browseFiles() ZAV_LOG_REQUIRES(criticalSection_);
    bool isInSeries(const std::string& fileName) const;
    void rotateFiles() ZAV_LOG_REQUIRES(criticalSection_);
    void openFile() ZAV_LOG_REQUIRES(criticalSection_);
    void continueFile() ZAV_LOG_REQUIRES(criticalSection_);
    void openLiveFile(Platform::OutputFile::Mode mode) ZAV_LOG_REQUIRES(criticalSection_);
    std::size_t write(std::string_view text) ZAV_LOG_REQUIRES(criticalSection_);
    void checkFile() const ZAV_LOG_REQUIRES(criticalSection_);
    std::string pathOf(const std::string& fileName) const;

    const AppenderValues values_;
    const std::uint64_t fileNumber_; ///< the highest index of an older file
    /// Each end of line counts as one byte.
    std::uint64_t currentSize_ ZAV_LOG_GUARDED_BY(criticalSection_) = 0;
    Util::TimeUtils::Time openTime_ ZAV_LOG_GUARDED_BY(criticalSection_);
    /// Without the directory, in ascending index order; the live file is the front.
    std::deque<std::string> fileNames_ ZAV_LOG_GUARDED_BY(criticalSection_);
    Platform::OutputFile outputFileStream_ ZAV_LOG_GUARDED_BY(criticalSection_);

    const std::string folder_; ///< of the values, wherever the process goes
    const std::string livePath_;
    SeriesOwner owner_ ZAV_LOG_GUARDED_BY(criticalSection_);
    /// Whether others may have changed the series since `fileNames_` was read.
    bool mustBrowse_ ZAV_LOG_GUARDED_BY(criticalSection_) = true;
    /// Whether the older files have moved up already for a live file that is not open yet.
    bool hasRotated_ ZAV_LOG_GUARDED_BY(criticalSection_) = false;
    /// Whether the last rotation had to leave the live file where it was.
    bool liveFileStays_ ZAV_LOG_GUARDED_BY(criticalSection_) = false;
    Util::TimeUtils::Time lastLook_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< of the last look or failure
};

} // namespace Log
} // namespace ZAV
