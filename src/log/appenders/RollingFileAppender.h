#pragma once

#include "log/appenders/FileAppender.h"
#include "log/appenders/RolledFiles.h"
#include "log/config/AppenderValues.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace ZAV {
namespace Log {

/// The period of time whose lines belong in one file.
///
/// It ends where an hour or a day of local time begins. An hour repeated when clocks are put back counts as
/// two; a day is one, whatever its length.
struct RollPeriod {
    /// An unknown period: any time is far before it.
    RollPeriod()
        : earliest(std::numeric_limits<std::uint64_t>::max(), Util::TimeUtils::USEC), end(earliest) {}

    /// \param time within the period
    RollPeriod(RollMoment moment, Util::TimeUtils::Time time);

    /// \return whether a line with that time belongs in a new file
    bool endsBefore(Util::TimeUtils::Time time) const { return time >= end; }

    /// \return whether the time is so much earlier that the clock must have been wrong: threads may write lines out of
    ///         timestamp order, but not by hours
    bool isFarBehind(Util::TimeUtils::Time time) const { return time < earliest; }

    Util::TimeUtils::Time earliest; ///< some time before the period
    Util::TimeUtils::Time end;      ///< the first moment after it
};

/// Writes each message as one flushed line to a live file, appending if it exists. When the next line would
/// make it too large, or belongs to another hour or day, the file is rolled: it is permanently renamed to a
/// name with that time, and a new live file is begun. Rolled files are kept within the configured limits, and
/// packed if so configured.
class RollingFileAppender : public LiveFileAppender {
public:
    RollingFileAppender(const AppenderValues& values, const Filters& filters);
    ~RollingFileAppender() override;

    /// Does for the files of earlier runs what is done after each roll: deletes what exceeds the limits, and
    /// has packed what is not yet completely packed. To be called once the appender is in service; otherwise
    /// done with the first line.
    void cleanUpOldFiles();

private:
    void prepareFile(const LogMessage& message) override ZAV_LOG_REQUIRES(criticalSection_);
    void continueFile() override ZAV_LOG_REQUIRES(criticalSection_);
    void prepareAnew(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_);
    bool fits(const LogMessage& message) const ZAV_LOG_REQUIRES(criticalSection_);
    bool mustRoll(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_);
    void roll(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_);
    void stayWithFile(Util::TimeUtils::Time now) ZAV_LOG_REQUIRES(criticalSection_);
    bool isTidy() const noexcept ZAV_LOG_REQUIRES(criticalSection_);
    void tidyUpAtStart() noexcept ZAV_LOG_REQUIRES(criticalSection_);
    void tidyUpAfter(const RolledFile& rolled) noexcept ZAV_LOG_REQUIRES(criticalSection_);
    void keep(std::vector<RolledFile>& files) ZAV_LOG_REQUIRES(criticalSection_);
    void pack(const std::vector<RolledFile>& files) ZAV_LOG_REQUIRES(criticalSection_);

    RolledFiles rolledFiles_ ZAV_LOG_GUARDED_BY(criticalSection_);
    RollPeriod period_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< the period of the live file's lines
    /// The `Platform::forkGeneration` in which the files of earlier runs were tidied up.
    std::optional<unsigned> tidiedGeneration_ ZAV_LOG_GUARDED_BY(criticalSection_);
    Util::TimeUtils::Time lastTidying_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< last attempt in a child
    bool renameFailed_ ZAV_LOG_GUARDED_BY(criticalSection_) =
        false; ///< whether the live file could not be renamed
    Util::TimeUtils::Time lastTry_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< last attempt to rename it
};

} // namespace Log
} // namespace ZAV
