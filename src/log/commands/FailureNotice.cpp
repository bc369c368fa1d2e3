#include "log/commands/FailureNotice.h"

#include "log/commands/CommandBus.h"
#include "log/commands/CommandNames.h"
#include "log/reentrancy/ThreadRecord.h"
#include "platform/CriticalSection.h"
#include "platform/NeverDestroyed.h"
#include "zav-util/StandardError.h"

#include <algorithm>
#include <exception>
#include <vector>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// The appenders that fail.
struct Failing : Platform::NeverDestroyed<Failing> {
    Platform::CriticalSection lock{Platform::AWAITED_BY_FORK};
    std::vector<const Appender*> appenders ZAV_LOG_GUARDED_BY(lock);
};

const Failing& madeAtLoad = Failing::instance();

} // namespace

void FailureNotice::setWanted(bool isWanted) noexcept {
    Failing& known = Failing::instance();
    const ScopedLock lock(known.lock);
    wanted = isWanted;
    known.appenders.clear();
    failing = 0;
}

/// The line is written when the lock is free, and what it says is lost if there is no memory for it.
void FailureNotice::tell(const Appender* appender, const std::string& name, const char* reason) noexcept {
    try {
        {
            Failing& known = Failing::instance();
            const ScopedLock lock(known.lock);
            const auto end = known.appenders.end();
            if (std::find(known.appenders.begin(), end, appender) != end) {
                return;
            }
            known.appenders.push_back(appender);
            failing |= markOf(appender);
        }
        if (!CommandBus::instance().hasListener(CommandName::FAILURE_REPORT)) {
            Util::writeErrorLine("zav-log: appender " + name + ": ", reason);
        }
    } catch (const std::exception&) {
        return;
    }
}

void FailureNotice::noteWrittenAgain(const Appender* appender) noexcept {
    ThreadRecord& thread = threadRecord();
    if (thread.keptLineOf == appender) {
        thread.keptLineOf = nullptr;
    } else {
        forget(appender);
    }
}

void FailureNotice::forget(const Appender* appender) noexcept {
    if (!mayFail(appender)) {
        return;
    }
    Failing& known = Failing::instance();
    const ScopedLock lock(known.lock);
    known.appenders.erase(std::remove(known.appenders.begin(), known.appenders.end(), appender),
                          known.appenders.end());
    std::uint64_t marks = 0;
    for (const Appender* const other : known.appenders) {
        marks |= markOf(other);
    }
    failing = marks;
}

} // namespace Log
} // namespace ZAV
