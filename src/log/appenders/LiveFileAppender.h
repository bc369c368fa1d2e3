#pragma once

#include "log/appenders/SeriesOwner.h"
#include "log/async/BatchAppender.h"
#include "log/config/AppenderValues.h"
#include "platform/OpenFiles.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ZAV {
namespace Log {

/// Writes each message as one flushed line to a file that stays open, the live one of a series, which gives
/// way to a new one now and then.
///
/// A forked child only appends to the live file of the process that moves it, see `SeriesOwner`. The
/// directory is never created; a relative one is taken from the one that the process is in when the appender
/// is made.
class LiveFileAppender : public BatchAppender {
public:
    ~LiveFileAppender() override;

protected:
    /// \param liveName the name of the live file in the folder of the values
    LiveFileAppender(const AppenderValues& values, const Filters& filters, const std::string& liveName);

    /// \throw LogException if the live file cannot be opened or written; every later message fails as well,
    ///        until a recovery
    void outputLine(const LogMessage& message) final ZAV_LOG_REQUIRES(criticalSection_);
    void writeLines(std::string_view text, std::size_t& written) final ZAV_LOG_REQUIRES(criticalSection_);
    void closeFile() override ZAV_LOG_REQUIRES(criticalSection_) { outputFileStream_.close(); }
    std::string fileName() const override { return liveName_; }

    /// Sees to it that the live file is open and has room for the line.
    /// \throw LogException if that fails
    virtual void prepareFile(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_) = 0;

    /// Opens the live file where it ends: whoever put it there, what it holds is kept.
    virtual void continueFile() ZAV_LOG_REQUIRES(criticalSection_);

    /// In a process that may not move the live file, which goes where that is now.
    void followFile() ZAV_LOG_REQUIRES(criticalSection_);

    void openLiveFile(Platform::OutputFile::Mode mode) ZAV_LOG_REQUIRES(criticalSection_);
    void checkFile() const ZAV_LOG_REQUIRES(criticalSection_);
    std::string pathOf(const std::string& fileName) const;

    const AppenderValues values_;
    const std::shared_ptr<const LineLayout> layout_;
    const std::string folder_; ///< of the values, wherever the process goes
    const std::string livePath_;
    SeriesOwner owner_ ZAV_LOG_GUARDED_BY(criticalSection_);
    Platform::OutputFile outputFileStream_ ZAV_LOG_GUARDED_BY(criticalSection_);
    /// With what is kept for it. Each end of line counts as one byte.
    std::uint64_t currentSize_ ZAV_LOG_GUARDED_BY(criticalSection_) = 0;
    /// When what the live file held was written last, if that was continued.
    Util::TimeUtils::Time lastWritten_ ZAV_LOG_GUARDED_BY(criticalSection_);
    Util::TimeUtils::Time openTime_ ZAV_LOG_GUARDED_BY(criticalSection_);

private:
    void recover() ZAV_LOG_REQUIRES(criticalSection_);
    bool isTimeToLook() const ZAV_LOG_REQUIRES(criticalSection_);
    std::size_t write(std::string_view text) ZAV_LOG_REQUIRES(criticalSection_);

    const std::string liveName_;
    Util::TimeUtils::Time lastLook_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< of the last look or failure
};

} // namespace Log
} // namespace ZAV
