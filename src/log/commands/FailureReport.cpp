#include "log/commands/FailureReport.h"

#include "log/LogLine.h"
#include "log/commands/CommandBus.h"
#include "log/commands/CommandNames.h"
#include "log/message/FailureCount.h"
#include "log/reentrancy/ReportAnswer.h"

namespace ZAV {
namespace Log {
namespace FailureReport {

namespace {

constexpr int MOST_ANSWERED_REPORTS = 8;
/// Each listener and each failing appender multiplies the reports at every depth.
constexpr int MOST_NESTED_REPORTS = 1024;

bool isDelivered(ThreadRecord& thread) {
    if (thread.answeredReports == 0) {
        return true;
    }
    return thread.answeredReports <= MOST_ANSWERED_REPORTS && ++thread.nestedReports <= MOST_NESTED_REPORTS;
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
} // namespace Log
} // namespace ZAV
