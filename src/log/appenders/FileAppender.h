#pragma once

#include "log/appenders/LiveFileAppender.h"

#include <cstdint>
#include <deque>
#include <string>

namespace ZAV {
namespace Log {

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
