#pragma once

#include <string>

namespace ZAV {
namespace Log {

class LogMessage;

/// The report of a message that an appender could not write.
namespace FailureReport {

/// Delivers the command "EXCEPTION".
///
/// A listener may answer by logging, and that message may fail as well; its report is delivered too. Only a
/// loop has to end: reports in answer to reports are delivered eight deep, and no more than 1024 of them in
/// one call of the application or for one message of the queue; the rest are dropped.
/// \throw whatever a listener throws
void deliver(const std::string& text);

/// Counts a message that could not be written, and delivers its report.
/// \param reason the text of the `LogException` that said so; null if it was another exception
/// \throw whatever a listener throws
void deliverFor(const LogMessage& message, const char* reason);

/// Counts and reports a failure that is not one of a message.
/// \param activity what has failed, in a word
/// \throw whatever a listener throws
void deliverWithoutMessage(const std::string& activity, const std::string& reason);

} // namespace FailureReport
} // namespace Log
} // namespace ZAV
