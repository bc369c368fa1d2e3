#include "log/filters/LevelFilter.h"

#include "log/LogMessage.h"
#include "log/filters/TemporaryLevels.h"

#include <algorithm>
#include <optional>

namespace ZAV {
namespace Log {

bool LevelFilter::accept(const LogMessage& message) {
    return passes(message) || TemporaryLevels::instance().letsThrough(message.getLevel(), message.getTime());
}

LevelFilter::State LevelFilter::stateAt(Time time) const {
    State state = ownStateAt(time);
    const std::optional<TemporaryLevel> temporary = TemporaryLevels::instance().lowestAt(time);
    if (temporary && temporary->level < state.level) {
        state = {temporary->level, temporary->until};
    } else if (temporary && temporary->level == state.level && state.until != Time()) {
        state.until = std::max(state.until, temporary->until);
    }
    return state;
}

} // namespace Log
} // namespace ZAV
