#pragma once

#include "log/reentrancy/ThreadRecord.h"

namespace ZAV {
namespace Log {

/// While it lives, what its thread logs counts as logged in answer to reports of failures.
///
/// A listener may answer a report by logging, that message may fail as well, and its report may be answered
/// again. The count goes along with a message that is written later, or by another thread, so that such a
/// chain has an end.
class ReportAnswer {
public:
    /// \param record the calling thread's
    /// \param answeredReports the length of the chain of reports that led here; 0 if nothing is answered
    ReportAnswer(ThreadRecord& record, int answeredReports) noexcept
        : record_(record), before_(record_.answeredReports) {
        record_.answeredReports = answeredReports;
    }
    ~ReportAnswer() { record_.answeredReports = before_; }
    ReportAnswer(const ReportAnswer&) = delete;
    ReportAnswer& operator=(const ReportAnswer&) = delete;

private:
    ThreadRecord& record_;
    const int before_;
};

} // namespace Log
} // namespace ZAV
