#include "log/appenders/RollingFileAppender.h"

#include "log/LogMessage.h"
#include "log/appenders/Packer.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Process.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;
using Util::TimeUtils::Time;

namespace {

constexpr std::int64_t MICROSECONDS = 1'000'000;
constexpr std::int64_t HOUR = 3600;
constexpr std::int64_t DAY = 24 * HOUR;
constexpr int MAX_CHANGES =
    4; ///< clock changes within a day; also ends the search if the system cannot convert a time

/// \return the local time at a moment of UTC, as seconds
std::int64_t shownAt(std::int64_t moment) {
    return Platform::toSeconds(Platform::toLocalTime(moment));
}

/// \return the first second in (begin, end] with another UTC offset than `begin`; `end` if there is none earlier
std::int64_t findChange(std::int64_t begin, std::int64_t end) {
    const std::int64_t offset = shownAt(begin) - begin;
    if (shownAt(end) - end == offset) {
        return end;
    }
    while (end - begin > 1) {
        const std::int64_t middle = begin + (end - begin) / 2;
        (shownAt(middle) - middle == offset ? begin : end) = middle;
    }
    return end;
}

bool beginsPeriod(std::int64_t moment, std::int64_t length) {
    const std::int64_t before = shownAt(moment - 1);
    const std::int64_t shown = shownAt(moment);
    return shown / length != before / length || (length == HOUR && shown < before);
}

/// \return the first later moment at which an hour or a day of local time begins
std::int64_t nextMoment(std::int64_t moment, std::int64_t length) {
    for (int change = 0; change < MAX_CHANGES; ++change) {
        moment = findChange(moment, moment + length - shownAt(moment) % length);
        if (beginsPeriod(moment, length)) {
            break;
        }
    }
    return moment;
}

Time toTime(std::int64_t seconds) {
    return Time(static_cast<std::uint64_t>(seconds), Util::TimeUtils::SEC);
}

} // namespace

RollPeriod::RollPeriod(RollMoment moment, Time time) : RollPeriod() {
    if (moment == RollMoment::NEVER) {
        earliest = Time();
    } else {
        const std::int64_t length = moment == RollMoment::HOUR ? HOUR : DAY;
        const std::int64_t next =
            nextMoment(static_cast<std::int64_t>(time.microseconds() / MICROSECONDS), length);
        earliest = toTime(std::max<std::int64_t>(next - 3 * length, 0));
        end = toTime(next);
    }
}

namespace {

/// How often renaming the live file is retried, and how often a forked child checks whether its parent still
/// owns the series.
constexpr Time RETRY_PERIOD(10, Util::TimeUtils::SEC);

/// How long a forked child may still write to a file after its parent has rolled it.
constexpr Time LATE_WRITES(1, Util::TimeUtils::SEC);

Time since(Time begin, Time end) {
    return Time(end.microseconds() - begin.microseconds(), Util::TimeUtils::USEC);
}

} // namespace

RollingFileAppender::RollingFileAppender(const AppenderValues& values, const Filters& filters)
    : LiveFileAppender(values, filters, values.file), rolledFiles_(livePath_) {}

RollingFileAppender::~RollingFileAppender() {
    Packer::instance().forget(this);
}

void RollingFileAppender::prepareFile(const LogMessage& message) {
    if (values_.rollSize != 0 && owner_.isShared()) {
        currentSize_ =
            outputFileStream_.size() + keptSize(); // including what the other processes have written
    }
    if (!outputFileStream_.isOpen() || owner_.mustRecheckFile() || !fits(message)) {
        prepareAnew(message);
    }
}

bool RollingFileAppender::fits(const LogMessage& message) const {
    const bool hasRoom = values_.rollSize == 0 || currentSize_ + line().size() <= values_.rollSize;
    return hasRoom && !period_.endsBefore(message.getTime()) && !period_.isFarBehind(message.getTime());
}

/// If memory runs out here, the next message tries again.
void RollingFileAppender::prepareAnew(const LogMessage& message) {
    const bool isFirst = !outputFileStream_.isOpen();
    const bool mustRecheckFile = owner_.mustRecheckFile();
    if (isFirst || mustRecheckFile) {
        rolledFiles_.forgetLast();
    }
    if (mustRecheckFile) {
        followFile();
    } else if (isFirst) {
        continueFile();
    }
    const bool isTimeToAsk = !isTidy() && since(lastTidying_, message.getTime()) >= RETRY_PERIOD;
    if (isFirst || isTimeToAsk) {
        lastTidying_ = isFirst ? Time() : message.getTime(); // a forked child then checks with its first line
        tidyUpAtStart();
    }
    if (!fits(message) && mustRoll(message) && owner_.mayRotate()) {
        roll(message);
    }
}

/// The time of the last write determines the file's period; an empty file gets that of the next line.
void RollingFileAppender::continueFile() {
    LiveFileAppender::continueFile();
    period_ = currentSize_ == 0 ? RollPeriod() : RollPeriod(values_.rollAt, lastWritten_);
}

/// Takes the size from the file itself, since others may have written to it.
bool RollingFileAppender::mustRoll(const LogMessage& message) {
    currentSize_ = outputFileStream_.size() + keptSize();
    if (currentSize_ == 0 || period_.isFarBehind(message.getTime())) {
        period_ = RollPeriod(values_.rollAt, message.getTime());
    }
    const bool mayTry = !renameFailed_ || since(lastTry_, Time::now()) >= RETRY_PERIOD;
    return currentSize_ != 0 && !fits(message) && mayTry;
}

void RollingFileAppender::roll(const LogMessage& message) {
    writeKept();
    checkFile();
    outputFileStream_.close();
    const Time now = Time::now();
    RolledFile rolled;
    const bool isRolled = rolledFiles_.roll(now, rolled);
    if (!isRolled && Platform::isTaken(livePath_)) {
        stayWithFile(now);
        return;
    }
    openLiveFile(Platform::OutputFile::CREATE);
    currentSize_ = outputFileStream_.size();
    period_ = RollPeriod(values_.rollAt, message.getTime());
    renameFailed_ = false;
    owner_.noteRotation();
    if (isRolled) {
        tidyUpAfter(rolled);
    }
}

/// Continues with the file, whatever its size or age, rather than lose lines.
void RollingFileAppender::stayWithFile(Time now) {
    renameFailed_ = true;
    lastTry_ = now;
    continueFile();
    Packer::instance().report(this, "Unable to rename the file: " + livePath_);
}

void RollingFileAppender::cleanUpOldFiles() {
    const ScopedLock lock(criticalSection_);
    tidyUpAtStart();
}

/// A child that takes over from its parent cannot know what that has left undone, so it tidies up, too.
bool RollingFileAppender::isTidy() const noexcept {
    return tidiedGeneration_ == Platform::forkGeneration();
}

/// Tried again later if the folder cannot be listed yet.
void RollingFileAppender::tidyUpAtStart() noexcept {
    if (isTidy() || !owner_.mayRotate()) {
        return;
    }
    try {
        std::vector<RolledFile> files;
        std::vector<std::string> parts;
        if (rolledFiles_.list(files, parts)) {
            tidiedGeneration_ = Platform::forkGeneration();
        }
        for (const std::string& path : parts) {
            if (!values_.packs || !Platform::isTaken(path)) { // otherwise packing it does so
                removeAbandonedPart(path);
            }
        }
        keep(files);
        pack(files);
    } catch (const std::exception&) {
        return; // out of memory; the next roll or start does it
    }
}

/// Retries what could not be packed earlier, if nothing else is queued.
void RollingFileAppender::tidyUpAfter(const RolledFile& rolled) noexcept {
    if (!isTidy()) {
        tidyUpAtStart();
        return;
    }
    const bool hasLimits = values_.keepFiles != 0 || values_.keepSize != 0 || values_.keepTime != Time();
    try {
        std::vector<RolledFile> files;
        std::vector<std::string> parts;
        if (hasLimits && rolledFiles_.list(files, parts)) {
            keep(files);
        }
        if (!Packer::instance().isIdle() || files.empty()) {
            files = {rolled};
        }
        pack(files);
    } catch (const std::exception&) {
        return; // out of memory; the next roll or start does it
    }
}

void RollingFileAppender::keep(std::vector<RolledFile>& files) {
    const std::optional<Platform::FileStatus> live = Platform::statFile(livePath_);
    const std::string undeletable = rolledFiles_.keep(values_, live ? live->size : 0, Time::now(), files);
    if (!undeletable.empty()) {
        Packer::instance().report(this, "Unable to delete the file: " + undeletable);
    }
}

/// Leaves alone what only has the name of a rolled file, such as a symbolic link.
void RollingFileAppender::pack(const std::vector<RolledFile>& files) {
    const std::string lateStamp = RolledFiles::stampOf(since(LATE_WRITES, Time::now()));
    for (const RolledFile& file : files) {
        if (values_.packs && file.isPlain && Platform::statFile(rolledFiles_.pathOf(file))) {
            Packer::instance().pack(this, rolledFiles_.pathOf(file), file.stamp >= lateStamp);
        }
    }
}

} // namespace Log
} // namespace ZAV
