#include "log/appenders/RollingFileAppender.h"

#include "log/LogMessage.h"
#include "log/appenders/GzipFile.h"
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
constexpr int MOST_CHANGES = 4; ///< within a day; a time that the system cannot convert ends the search, too

/// What a clock on the wall shows, as seconds, at a moment of UTC.
std::int64_t shownAt(std::int64_t moment) {
    return Platform::toSeconds(Platform::toLocalTime(moment));
}

/// \return the first second in (begin, end] at which clocks have been put forward or back since `begin`; `end` if none
///         is earlier
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

/// \return the first moment behind another one at which an hour or a day of local time begins
std::int64_t nextMoment(std::int64_t moment, std::int64_t length) {
    for (int change = 0; change < MOST_CHANGES; ++change) {
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

/// How often a live file that cannot be renamed is tried again, and how often a forked child asks whether its
/// parent still sees to the files.
constexpr Time RETRY_PERIOD(10, Util::TimeUtils::SEC);

/// In which a forked child may still write to a file that its parent has rolled.
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
        currentSize_ = outputFileStream_.size() + keptSize(); // with what the other processes have written
    }
    if (!outputFileStream_.isOpen() || owner_.isNotAlone() || !fits(message)) {
        prepareAnew(message);
    }
}

bool RollingFileAppender::fits(const LogMessage& message) const {
    const bool hasRoom = values_.rollSize == 0 || currentSize_ + line().size() <= values_.rollSize;
    return hasRoom && !period_.endsBefore(message.getTime()) && !period_.isFarBehind(message.getTime());
}

/// Whatever fails here for want of memory is taken up by the next message.
void RollingFileAppender::prepareAnew(const LogMessage& message) {
    const bool isFirst = !outputFileStream_.isOpen();
    const bool isNotAlone = owner_.isNotAlone();
    if (isFirst || isNotAlone) {
        rolledFiles_.forgetLast();
    }
    if (isNotAlone) {
        followFile();
    } else if (isFirst) {
        continueFile();
    }
    const bool isTimeToAsk = !isTidy() && since(lastTidying_, message.getTime()) >= RETRY_PERIOD;
    if (isFirst || isTimeToAsk) {
        lastTidying_ =
            isFirst ? Time() : message.getTime(); // a child that is forked asks with its first line
        tidyUpAtStart();
    }
    if (!fits(message) && mustRoll(message) && owner_.mayRotate()) {
        roll(message);
    }
}

/// What the file holds decides into which stretch of time it belongs; one that holds nothing is for the next
/// line.
void RollingFileAppender::continueFile() {
    LiveFileAppender::continueFile();
    period_ = currentSize_ == 0 ? RollPeriod() : RollPeriod(values_.rollAt, lastWritten_);
}

/// Looks at the file itself, since others may have written to it.
bool RollingFileAppender::mustRoll(const LogMessage& message) {
    currentSize_ = outputFileStream_.size() + keptSize();
    if (currentSize_ == 0 || period_.isFarBehind(message.getTime())) {
        period_ = RollPeriod(values_.rollAt, message.getTime());
    }
    const bool mayTry = !isStuck_ || since(lastTry_, Time::now()) >= RETRY_PERIOD;
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
    isStuck_ = false;
    owner_.noteRotation();
    if (isRolled) {
        tidyUpAfter(rolled);
    }
}

/// No line is given up because a file has another size or age than it should.
void RollingFileAppender::stayWithFile(Time now) {
    isStuck_ = true;
    lastTry_ = now;
    continueFile();
    Packer::instance().report(this, "Unable to rename the file: " + livePath_);
}

void RollingFileAppender::tidyUp() {
    const ScopedLock lock(criticalSection_);
    tidyUpAtStart();
}

/// A child that takes over from its parent cannot know what that has left undone.
bool RollingFileAppender::isTidy() const noexcept {
    return tidyIn_ == Platform::forkGeneration();
}

/// In a folder that cannot be listed yet it is tried again.
void RollingFileAppender::tidyUpAtStart() noexcept {
    if (isTidy() || !owner_.mayRotate()) {
        return;
    }
    try {
        std::vector<RolledFile> files;
        std::vector<std::string> parts;
        if (rolledFiles_.list(files, parts)) {
            tidyIn_ = Platform::forkGeneration();
        }
        for (const std::string& path : parts) {
            if (!values_.packs || !Platform::isTaken(path)) { // or its packing does it
                removeAbandonedPart(path);
            }
        }
        keep(files);
        pack(files);
    } catch (const std::exception&) {
        return; // no memory; the next roll or start does it
    }
}

/// What could not be packed earlier is tried again, if nothing else waits.
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
        return; // no memory; the next roll or start does it
    }
}

void RollingFileAppender::keep(std::vector<RolledFile>& files) {
    const std::optional<Platform::FileStatus> live = Platform::lookAtFile(livePath_);
    const std::string undeletable = rolledFiles_.keep(values_, live ? live->size : 0, Time::now(), files);
    if (!undeletable.empty()) {
        Packer::instance().report(this, "Unable to delete the file: " + undeletable);
    }
}

/// What is rolled by its name alone, as a symbolic link is, stays as it is.
void RollingFileAppender::pack(const std::vector<RolledFile>& files) {
    const std::string lateStamp = RolledFiles::stampOf(since(LATE_WRITES, Time::now()));
    for (const RolledFile& file : files) {
        if (values_.packs && file.isPlain && Platform::lookAtFile(rolledFiles_.pathOf(file))) {
            Packer::instance().pack(this, rolledFiles_.pathOf(file), file.stamp >= lateStamp);
        }
    }
}

} // namespace Log
} // namespace ZAV
