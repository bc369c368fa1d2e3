#include "log/tree/SubtreeLevel.h"

#include "log/Logger.h"
#include "log/filters/TemporaryLevels.h"
#include "log/tree/LoggerInside.h"

#include <limits>

namespace ZAV {
namespace Log {

using namespace Util::TimeUtils;

namespace {

/// \return the sum, or the greatest time if it would be later
Time endOf(Time begin, Time duration) {
    const Time end = begin + duration;
    return end < begin ? Time(std::numeric_limits<std::uint64_t>::max(), USEC) : end;
}

} // namespace

void SubtreeLevel::setFor(Logger& logger, Level::LogLevel level, Time duration) {
    const Platform::ScopedLock lock(treeLock());
    const Time now = Time::now();
    if (duration == Time()) {
        TemporaryLevels::instance().endWhere([&](const Logger* other) { return other == &logger; }, now);
    } else {
        TemporaryLevels::instance().set(&logger, level, now, endOf(now, duration));
    }
    logger.inside_->forSubtree([now](Logger& below)
                                   ZAV_LOG_REQUIRES(treeLock()) { below.inside_->renewLevel(now); });
}

} // namespace Log
} // namespace ZAV
