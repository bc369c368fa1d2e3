#include "platform/Clock.h"

#include "platform/CriticalSection.h"
#include "platform/Files.h"
#include "platform/Process.h"

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

/// The C library's conversion to local time. It takes a lock of the C library, which a fork disregards.
/// \return all zero if the system cannot convert that point in time
CalendarTime askSystem(std::int64_t seconds) {
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm local;
    if (localtime_r(&time, &local) == nullptr) {
        return CalendarTime{};
    }
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

/// The process's offset from UTC for the years around the moment at which the table was filled. Allocates no
/// memory.
class OffsetTable {
public:
    /// Queries the system about a thousand times, which takes a fraction of a millisecond.
    /// \param now seconds since 1970-01-01 00:00:00 UTC
    void fill(std::int64_t now);
    bool isFilled() const { return count_ != 0; }

    /// \return whether the table was filled less than a day before or after that time. Older data may be outdated:
    ///         zones get new rules.
    bool isFreshAt(std::int64_t seconds) const;

    /// \return the seconds ahead of UTC at that time, or at the nearest known time if it is outside the known years
    std::int64_t offsetAt(std::int64_t seconds) const;

private:
    struct Period {
        std::int64_t end; ///< the first second after it
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
/// No zone changes its offset and reverts it within this time.
constexpr std::int64_t STEP = 7 * DAY;

/// The zone's offset, including leap seconds if it counts them.
std::int64_t askOffset(std::int64_t seconds) {
    return toSeconds(askSystem(seconds)) - seconds;
}

/// \param last a time with the given offset
/// \param changed a later time with another offset
/// \return the first second with another offset
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

/// The C library reads the zone at the first conversion, honouring a "TZ" set before. Until then both names
/// are "GMT"; a zone with that name cannot be distinguished. While another thread converts, the first name is
/// briefly null, so the pointer is read once; the text itself is never freed.
bool isZoneRead() {
    const char* const volatile* const names = tzname;
    const char* const first = names[0];
    return first == nullptr || first != names[1] || std::strcmp(first, "GMT") != 0;
}

/// Converts with a table of the process's zone.
///
/// The C library's conversions take a lock that any thread of the application may hold during a fork, and
/// that then stays locked in the child. So a fork fills the table first, and the child uses only the table,
/// until the zone changes there: whoever changed it has been able to take that lock.
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

    /// Another thread may be in the middle of the first conversion, which is not visible yet. So a
    /// multi-threaded process reads the zone now; a single-threaded one may still set its "TZ".
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

    /// Refills the table if the day or the zone has changed.
    void renew() ZAV_LOG_REQUIRES(lock_) {
        const std::int64_t now = std::time(nullptr);
        if (!isCurrentAt(now)) {
            askSystem(now); // reads the zone if nobody has done so
            zone_ = currentTimeZone();
            table_.fill(now);
        }
    }

    CriticalSection lock_{AWAITED_BY_FORK};
    OffsetTable table_ ZAV_LOG_GUARDED_BY(lock_);
    TimeZone zone_ ZAV_LOG_GUARDED_BY(lock_){};          ///< that the table was filled for
    bool isInherited_ ZAV_LOG_GUARDED_BY(lock_) = false; ///< whether the C library's lock may never be free
    TimeZone inheritedZone_ ZAV_LOG_GUARDED_BY(lock_){}; ///< at the fork
};

const LocalZone& madeAtLoad = LocalZone::instance();

std::string zoneFolder() {
    const char* folder = std::getenv("TZDIR");
    return folder != nullptr ? folder : "/usr/share/zoneinfo";
}

/// The C library accepts any text as a zone and silently falls back to UTC, so the zone's file is checked
/// first.
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
    const bool isUtc = name == "UTC"; // works even if no zone files are installed
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
