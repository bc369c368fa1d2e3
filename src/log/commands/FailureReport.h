#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// The report of a message that an appender could not write.
///
/// A listener may answer a report by logging, and that message may fail as well. While a thread delivers a
/// report, it delivers no other one: that would lead back to the same listener for ever.
namespace FailureReport {

/// Delivers the command "EXCEPTION", unless the calling thread is delivering one already.
/// \throw whatever a listener throws
void deliver(const std::string& text);

/// \return true if the calling thread is delivering a report
bool isBeingDelivered();

/// While it lives, the calling thread counts as one that delivers a report.
class Answer {
public:
    /// \param answersReport false for a stretch of work that leaves the thread as it is
    explicit Answer(bool answersReport);
    ~Answer();
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

private:
    bool before_;
};

} // namespace FailureReport
} // namespace Log
} // namespace ZAV
