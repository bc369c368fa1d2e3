#pragma once

#include "log/appenders/LiveFileAppender.h"
#include "log/appenders/RolledFiles.h"
#include "log/config/AppenderValues.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace ZAV {
namespace Log {

/// The stretch of time whose lines belong into one file.
///
/// It ends where an hour or a day of local time begins. An hour that comes twice, when clocks are put back,
/// is two; a day is one, however long it is.
struct RollPeriod {
    /// One that is not known: any time is far behind it.
    RollPeriod()
        : earliest(std::numeric_limits<std::uint64_t>::max(), Util::TimeUtils::USEC), end(earliest) {}

    /// \param time in the stretch
    RollPeriod(RollMoment moment, Util::TimeUtils::Time time);

    /// \return whether a line of that time begins a new file
    bool endsBefore(Util::TimeUtils::Time time) const { return time >= end; }

    /// \return whether the time is so much earlier that the clock must have been wrong: threads stamp lines in
    ///         another order than they write them, but not by hours
    bool isFarBehind(Util::TimeUtils::Time time) const { return time < earliest; }

    Util::TimeUtils::Time earliest; ///< some time before the stretch
    Util::TimeUtils::Time end;      ///< the first moment behind it
};

/// Writes each message as one flushed line to a live file, which is continued where it exists already. When
/// the next line would make it too large, or lies in another hour or day than the last one, it is rolled: it
/// gets a name that says when that was, for good, and a new live file is begun. Of the rolled files as many
/// are kept as the limits allow, packed if so configured.
class RollingFileAppender : public LiveFileAppender {
public:
    RollingFileAppender(const AppenderValues& values, const Filters& filters);
    ~RollingFileAppender() override;

    /// Does for the files of earlier runs what is done when a file is rolled: deletes what is beyond the
    /// limits, and has packed what is not, or not wholly. To be called when the appender is in service; the
    /// first line does it otherwise.
    void tidyUp();

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
    RollPeriod period_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< that of the lines of the live file
    /// In which process of a family the files of before were seen to, see `Platform::forkGeneration`.
    std::optional<unsigned> tidyIn_ ZAV_LOG_GUARDED_BY(criticalSection_);
    Util::TimeUtils::Time lastTidying_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< that was tried in a child
    bool
        isStuck_ ZAV_LOG_GUARDED_BY(criticalSection_) = false; ///< whether the live file could not be renamed
    Util::TimeUtils::Time lastTry_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< to rename it
};

} // namespace Log
} // namespace ZAV
