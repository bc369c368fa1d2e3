#pragma once

#include <cstdint>
#include <string>

namespace ZAV {
namespace Log {

/// The report of a message that an appender could not write.
namespace FailureReport {

/// Counts a failure, whether or not its report can be made.
void count() noexcept;

/// \return the failures since the library was loaded
std::uint64_t counted() noexcept;

/// Delivers the command "EXCEPTION".
///
/// A listener may answer by logging, and that message may fail as well; its report is delivered too. Only a
/// loop has to end: reports in answer to reports are delivered eight deep, and no more than 1024 of them in
/// one call of the application or one round of the consumer; the rest are dropped.
/// \throw whatever a listener throws
void deliver(const std::string& text);

} // namespace FailureReport
} // namespace Log
} // namespace ZAV
