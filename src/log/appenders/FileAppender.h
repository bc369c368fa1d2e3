#pragma once

#include "log/appenders/BatchAppender.h"
#include "log/appenders/SeriesOwner.h"
#include "log/config/AppenderValues.h"
#include "platform/OpenFiles.h"
#include "zav-util/TimeUtils.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

namespace ZAV {
namespace Log {

/// Writes each message as one flushed line to the live file of a series, which stays open until it is
/// replaced by a new one. Derived classes decide when and how: `FileAppender` and `RollingFileAppender`.
///
/// A forked child only appends to the live file of the process that rotates it, see `SeriesOwner`. The
/// directory is never created; a relative path is resolved when the appender is created.
class LiveFileAppender : public BatchAppender {
public:
    ~LiveFileAppender() override;

protected:
    /// \param liveName the name of the live file in the configured directory
    LiveFileAppender(const AppenderValues& values, const Filters& filters, const std::string& liveName);

    /// \throw LogException if the live file cannot be opened or written; later messages then fail, too, until a
    ///        recovery
    void outputLine(const LogMessage& message) final ZAV_LOG_REQUIRES(criticalSection_);
    void writeLines(std::string_view text, std::size_t& written) final ZAV_LOG_REQUIRES(criticalSection_);
    void closeFile() override ZAV_LOG_REQUIRES(criticalSection_) { outputFileStream_.close(); }
    std::string fileName() const override { return liveName_; }

    /// Ensures that the live file is open and has room for the line.
    /// \throw LogException on failure
    virtual void prepareFile(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_) = 0;

    /// Opens the live file for appending; existing content is kept, whoever wrote it.
    virtual void continueFile() ZAV_LOG_REQUIRES(criticalSection_);

    /// For a process that may not rotate: switches to the current live file.
    void followFile() ZAV_LOG_REQUIRES(criticalSection_);

    void openLiveFile(Platform::OutputFile::Mode mode) ZAV_LOG_REQUIRES(criticalSection_);
    void checkFile() const ZAV_LOG_REQUIRES(criticalSection_);
    std::string pathOf(const std::string& fileName) const;

    const AppenderValues values_;
    const std::shared_ptr<const LineLayout> layout_;
    const std::string folder_; ///< the configured directory, as an absolute path
    const std::string livePath_;
    SeriesOwner owner_ ZAV_LOG_GUARDED_BY(criticalSection_);
    Platform::OutputFile outputFileStream_ ZAV_LOG_GUARDED_BY(criticalSection_);
    /// Includes lines not yet written. Each line end written counts as one byte.
    std::uint64_t currentSize_ ZAV_LOG_GUARDED_BY(criticalSection_) = 0;
    /// Time of the last write before the live file was continued, if it was.
    Util::TimeUtils::Time lastWritten_ ZAV_LOG_GUARDED_BY(criticalSection_);
    Util::TimeUtils::Time openTime_ ZAV_LOG_GUARDED_BY(criticalSection_);

private:
    void recover() ZAV_LOG_REQUIRES(criticalSection_);
    bool isTimeToLook() const ZAV_LOG_REQUIRES(criticalSection_);
    std::size_t write(std::string_view text) ZAV_LOG_REQUIRES(criticalSection_);

    const std::string liveName_;
    Util::TimeUtils::Time lastLook_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< of the last check or failure
};

/// Writes each message as one flushed line to a live file and keeps a limited series of older files.
///
/// A file is named by the base name and one digit: 0 is the live file, 1 the most recent of the older ones.
/// The live file is rotated when the next line would make it too large, or when it has been open too long:
/// each file is renamed to the next index, and the one beyond the highest index is deleted.
class FileAppender : public LiveFileAppender {
public:
    /// Keeps the index to one digit.
    static constexpr std::uint64_t HIGHEST_FILE_NUMBER = 9;

    FileAppender(const AppenderValues& values, const Filters& filters);

private:
    /// \throw LogException also if the directory cannot be listed; retried with the next message
    void prepareFile(const LogMessage& message) override ZAV_LOG_REQUIRES(criticalSection_);
    void continueFile() override ZAV_LOG_REQUIRES(criticalSection_);
    bool hasRoom() const ZAV_LOG_REQUIRES(criticalSection_);
    bool isTooOld() const ZAV_LOG_REQUIRES(criticalSection_);
    void browseFiles() ZAV_LOG_REQUIRES(criticalSection_);
    bool isInSeries(const std::string& fileName) const;
    void rotateFiles() ZAV_LOG_REQUIRES(criticalSection_);
    void openFile() ZAV_LOG_REQUIRES(criticalSection_);

    const std::uint64_t fileNumber_; ///< the highest index of an older file
    /// Without the directory, in ascending index order; the live file is first.
    std::deque<std::string> fileNames_ ZAV_LOG_GUARDED_BY(criticalSection_);
    /// Whether the series may have been changed by others since `fileNames_` was read.
    bool mustBrowse_ ZAV_LOG_GUARDED_BY(criticalSection_) = true;
    /// Whether the older files have already been renamed for a live file that is not open yet.
    bool hasRotated_ ZAV_LOG_GUARDED_BY(criticalSection_) = false;
    /// Whether the last rotation could not rename the live file.
    bool liveFileStays_ ZAV_LOG_GUARDED_BY(criticalSection_) = false;
};

} // namespace Log
} // namespace ZAV
