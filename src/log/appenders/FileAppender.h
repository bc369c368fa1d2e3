#pragma once

#include "log/appenders/LiveFileAppender.h"

#include <cstdint>
#include <deque>
#include <string>

namespace ZAV {
namespace Log {

/// Writes each message as one flushed line to a live file and keeps a bounded series of older files beside
/// it.
///
/// A file is named by the base name and one digit: 0 is the live file, 1 the most recent of the older ones.
/// The live file gives way to a new one when the next line would make it too large, or when it has been open
/// too long; each older file then moves up by one, and the one beyond the highest index is deleted.
class FileAppender : public LiveFileAppender {
public:
    /// So that an index is always one digit.
    static constexpr std::uint64_t HIGHEST_FILE_NUMBER = 9;

    FileAppender(const AppenderValues& values, const Filters& filters);

private:
    /// \throw LogException also if the directory cannot be listed; the next message tries again
    void prepareFile(const LogMessage& message) override ZAV_LOG_REQUIRES(criticalSection_);
    void continueFile() override ZAV_LOG_REQUIRES(criticalSection_);
    bool hasRoom() const ZAV_LOG_REQUIRES(criticalSection_);
    bool isTooOld() const ZAV_LOG_REQUIRES(criticalSection_);
    void browseFiles() ZAV_LOG_REQUIRES(criticalSection_);
    bool isInSeries(const std::string& fileName) const;
    void rotateFiles() ZAV_LOG_REQUIRES(criticalSection_);
    void openFile() ZAV_LOG_REQUIRES(criticalSection_);

    const std::uint64_t fileNumber_; ///< the highest index of an older file
    /// Without the directory, in ascending index order; the live file is the front.
    std::deque<std::string> fileNames_ ZAV_LOG_GUARDED_BY(criticalSection_);
    /// Whether others may have changed the series since `fileNames_` was read.
    bool mustBrowse_ ZAV_LOG_GUARDED_BY(criticalSection_) = true;
    /// Whether the older files have moved up already for a live file that is not open yet.
    bool hasRotated_ ZAV_LOG_GUARDED_BY(criticalSection_) = false;
    /// Whether the last rotation had to leave the live file where it was.
    bool liveFileStays_ ZAV_LOG_GUARDED_BY(criticalSection_) = false;
};

} // namespace Log
} // namespace ZAV
