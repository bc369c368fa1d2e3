#include "platform/Clock.h"

#include "platform/CriticalSection.h"
#include "platform/Files.h"
#include "platform/NeverDestroyed.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/single_threaded.h>

namespace ZAV {
namespace Platform {

namespace {

/// The system's own conversion to local time. It takes a lock of the system's, which a fork does not heed.
/// \return all zero if the system cannot convert that point in time
CalendarTime askSystem(std::int64_t seconds) {
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm local;
    if (localtime_r(&time, &local) == nullptr) {
        return CalendarTime{};
    }
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

/// How far the process's time zone is ahead of UTC, for the years around the moment at which the system was
/// asked. It takes no memory.
class OffsetTable {
public:
    /// Asks the system, about a thousand times, which takes a fraction of a millisecond.
    /// \param now seconds since 1970-01-01 00:00:00 UTC
    void fill(std::int64_t now);
    bool isFilled() const { return count_ != 0; }

    /// \return whether the system was asked less than a day before or after that time. What is known of later
    ///         ones may have changed: zones get new rules.
    bool isFreshAt(std::int64_t seconds) const;

    /// \return the seconds ahead of UTC at that time or, if it is beyond the years that are known, at the next
    ///         one that is not
    std::int64_t offsetAt(std::int64_t seconds) const;

private:
    struct Period {
        std::int64_t end; ///< the first second behind it
        std::int64_t offset;
    };

    std::int64_t filledAt_ = 0;
    std::size_t count_ = 0;
    std::array<Period, 64> periods_{};
};

constexpr std::int64_t DAY = 86400;
constexpr std::int64_t YEAR = 366 * DAY;
constexpr std::int64_t KNOWN_BEFORE = YEAR;
constexpr std::int64_t KNOWN_AFTER = 10 * YEAR;
/// No zone changes its offset and takes that back within such a time.
constexpr std::int64_t STEP = 7 * DAY;

/// What the zone adds to the seconds, leap seconds included where it counts them.
std::int64_t askOffset(std::int64_t seconds) {
    return toSeconds(askSystem(seconds)) - seconds;
}

/// \param last a time with that offset
/// \param changed a later time with another one
/// \return the first second with another one
std::int64_t findChange(std::int64_t last, std::int64_t changed, std::int64_t offset) {
    while (changed - last > 1) {
        const std::int64_t middle = last + (changed - last) / 2;
        (askOffset(middle) == offset ? last : changed) = middle;
    }
    return changed;
}

void OffsetTable::fill(std::int64_t now) {
    const std::int64_t end = now + KNOWN_AFTER;
    std::int64_t time = now - KNOWN_BEFORE;
    std::int64_t offset = askOffset(time);
    count_ = 0;
    while (time < end && count_ + 1 < periods_.size()) {
        const std::int64_t next = std::min(time + STEP, end);
        if (askOffset(next) == offset) {
            time = next;
        } else {
            time = findChange(time, next, offset);
            periods_[count_++] = {time, offset};
            offset = askOffset(time);
        }
    }
    periods_[count_++] = {time, offset};
    filledAt_ = now;
}

bool OffsetTable::isFreshAt(std::int64_t seconds) const {
    return isFilled() && seconds > filledAt_ - DAY && seconds < filledAt_ + DAY;
}

std::int64_t OffsetTable::offsetAt(std::int64_t seconds) const {
    const Period* const last = &periods_[count_ - 1];
    return std::find_if(&periods_[0], last, [seconds](const Period& period) { return seconds < period.end; })
        ->offset;
}

/// The system reads the zone with the first conversion, and heeds a "TZ" that is set before. Until then the
/// names are these; a zone that is called so cannot be told apart from that. While another thread converts,
/// the first one is missing for a moment, so it is looked at once; the text itself stays for ever.
bool isZoneRead() {
    const char* const volatile* const names = tzname;
    const char* const first = names[0];
    return first == nullptr || first != names[1] || std::strcmp(first, "GMT") != 0;
}

/// The process's zone, from a table.
///
/// The system's conversions take a lock of its own, which any thread of the application may hold when it
/// forks, and which then stays locked in the child. So a fork makes sure that the table is filled, and the
/// child asks the table alone, until the zone has changed there: whoever changed it has had that lock.
class LocalZone : public NeverDestroyed<LocalZone> {
public:
    CalendarTime convert(std::int64_t seconds) {
        const ScopedLock lock(lock_);
        if (!mayAskSystem() && table_.isFilled()) {
            return toCalendarTime(seconds + table_.offsetAt(seconds));
        }
        if (!isCurrentAt(seconds)) {
            renew();
        }
        return isCurrentAt(seconds) ? toCalendarTime(seconds + table_.offsetAt(seconds)) : askSystem(seconds);
    }

private:
    friend NeverDestroyed;

    LocalZone() {
        atFork([] { instance().prepareForFork(); }, [] { instance().becomeChild(); });
    }

    /// Another thread may be amid the first conversion of all, of which nothing can be seen yet. So a process
    /// with threads has the zone read; one without any may still set its "TZ".
    void prepareForFork() {
        const ScopedLock lock(lock_);
        if ((isZoneRead() || __libc_single_threaded == 0) && mayAskSystem()) {
            renew();
        }
    }

    void becomeChild() {
        const ScopedLock lock(lock_);
        isInherited_ = true;
        inheritedZone_ = currentTimeZone();
    }

    bool mayAskSystem() ZAV_LOG_REQUIRES(lock_) {
        isInherited_ = isInherited_ && currentTimeZone() == inheritedZone_;
        return !isInherited_;
    }

    bool isCurrentAt(std::int64_t seconds) const ZAV_LOG_REQUIRES(lock_) {
        return table_.isFreshAt(seconds) && currentTimeZone() == zone_;
    }

    /// Fills the table anew if the day or the zone is no longer that of the last time.
    void renew() ZAV_LOG_REQUIRES(lock_) {
        const std::int64_t now = std::time(nullptr);
        if (!isCurrentAt(now)) {
            askSystem(now); // which reads the zone if nobody has done so
            zone_ = currentTimeZone();
            table_.fill(now);
        }
    }

    CriticalSection lock_{AWAITED_BY_FORK};
    OffsetTable table_ ZAV_LOG_GUARDED_BY(lock_);
    TimeZone zone_ ZAV_LOG_GUARDED_BY(lock_){};          ///< of the table
    bool isInherited_ ZAV_LOG_GUARDED_BY(lock_) = false; ///< whether the system's lock may be locked for ever
    TimeZone inheritedZone_ ZAV_LOG_GUARDED_BY(lock_){}; ///< at the fork
};

const LocalZone& madeAtLoad = LocalZone::instance();

std::string zoneFolder() {
    const char* folder = std::getenv("TZDIR");
    return folder != nullptr ? folder : "/usr/share/zoneinfo";
}

/// The C library takes any text for a zone and silently shows UTC; so the file is asked for first.
bool isKnown(const std::string& name) {
    const bool leavesFolder = name.front() == '/' || name.find("..") != std::string::npos;
    std::string zone;
    return !leavesFolder && readFile(zoneFolder() + '/' + name, zone) && zone.compare(0, 4, "TZif") == 0;
}

} // namespace

TimeZone currentTimeZone() noexcept {
    return {timezone, daylight, {tzname[0], tzname[1]}};
}

CalendarTime toLocalTime(std::int64_t seconds) {
    return LocalZone::instance().convert(seconds);
}

bool useZone(const std::string& name) {
    const bool isUtc = name == "UTC"; // also where no list of zones is installed
    if (name.empty() || (!isUtc && !isKnown(name))) {
        return false;
    }
    setenv("TZ", isUtc ? "UTC0" : (':' + name).c_str(), 1);
    tzset();
    return true;
}

std::int64_t utcOffset(std::int64_t seconds) {
    const std::time_t time = seconds;
    std::tm local;
    return localtime_r(&time, &local) == nullptr ? 0 : local.tm_gmtoff;
}

} // namespace Platform
} // namespace ZAV
