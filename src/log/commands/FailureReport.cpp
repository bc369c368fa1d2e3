#include "log/commands/FailureReport.h"

#include "log/LogLine.h"
#include "log/commands/CommandBus.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/CriticalSection.h"
#include "platform/Process.h"
#include "zav-util/StandardError.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <vector>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace FailureCount {

namespace {

std::atomic<std::uint64_t> failures{0};

} // namespace

void add() noexcept {
    failures.fetch_add(1, std::memory_order_relaxed);
}

std::uint64_t get() noexcept {
    return failures.load(std::memory_order_relaxed);
}

} // namespace FailureCount

namespace FailureReport {

namespace {

constexpr int MAX_ANSWERED_REPORTS = 8;
/// Each listener and each failing appender multiplies the reports at every depth.
constexpr int MAX_NESTED_REPORTS = 1024;

bool isDelivered(ThreadRecord& thread) {
    if (thread.answeredReports == 0) {
        return true;
    }
    return thread.answeredReports <= MAX_ANSWERED_REPORTS && ++thread.nestedReports <= MAX_NESTED_REPORTS;
}

} // namespace

void deliver(const std::string& text) {
    ThreadRecord& thread = threadRecord();
    if (isDelivered(thread)) {
        const ReportAnswer answer(thread, thread.answeredReports + 1);
        CommandBus::instance().deliver(CommandName::FAILURE_REPORT, text);
    }
}

void deliverFor(const LogMessage& message, const char* reason) {
    FailureCount::add();
    ++threadRecord().failedWrites;
    const std::string problem = reason != nullptr
                                    ? std::string("LogException from doOutput(msg).\nException = ") + reason
                                    : std::string("Unknown exception from doOutput(msg).");
    deliver(problem + "\nMsg = " + formatLogLine(message));
}

void deliverWithoutMessage(const std::string& activity, const std::string& reason) {
    FailureCount::add();
    deliver("LogException from " + activity + ".\nException = " + reason);
}

} // namespace FailureReport

namespace {

/// The failing appenders.
struct Failing : Platform::NeverDestroyed<Failing> {
    Platform::CriticalSection lock{Platform::AWAITED_BY_FORK};
    std::vector<const Appender*> appenders ZAV_LOG_GUARDED_BY(lock);
};

const Failing& madeAtLoad = Failing::instance();

} // namespace

void FailureNotice::setEnabled(bool enable) noexcept {
    Failing& known = Failing::instance();
    const ScopedLock lock(known.lock);
    wanted = enable;
    known.appenders.clear();
    failing = 0;
}

/// The line is written after the lock is released; if there is no memory for it, it is lost.
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
