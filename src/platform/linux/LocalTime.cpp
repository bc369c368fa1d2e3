#include "platform/LocalTime.h"

#include "OffsetTable.h"
#include "platform/CivilTime.h"
#include "platform/CriticalSection.h"

#include <cstring>
#include <ctime>
#include <sys/single_threaded.h>

namespace ZAV {
namespace Platform {

TimeZone currentTimeZone() noexcept {
    return {timezone, daylight, {tzname[0], tzname[1]}};
}

namespace {

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
class LocalZone {
public:
    /// Never destroyed, since threads may still log while the process ends.
    static LocalZone& instance() {
        static LocalZone& zone = *new LocalZone;
        return zone;
    }

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

/// So that no thread makes it while another one forks.
const LocalZone& madeAtLoad = LocalZone::instance();

} // namespace

CalendarTime toLocalTime(std::int64_t seconds) {
    return LocalZone::instance().convert(seconds);
}

} // namespace Platform
} // namespace ZAV
