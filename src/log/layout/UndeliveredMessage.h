#pragma once

#include <cstdint>
#include <string>

namespace ZAV {
namespace Log {

struct MessageFields;

/// What a line begins with that shows a message because the process ends.
constexpr char SHOWN_AT_PROCESS_END[] = "The process ends. Log message that was not written: ";

/// What a line begins with that shows the oldest message of too many.
constexpr char SHOWN_WHEN_DISCARDED[] = "Message queue size reached. Discarding oldest log message: ";

/// \return the line that shows a message; empty if there is no memory for it
std::string shownLine(const char* reason, const MessageFields& message) noexcept;

/// Shows such a line on the standard error stream, flushed; an empty one shows as the reason alone.
void showLine(const std::string& line, const char* reason) noexcept;

/// Shows a message on the standard error stream in place of its delivery: one line, flushed. It never throws;
/// if there is no memory for the line, the reason alone is shown.
/// \param reason what the line begins with
void showOnStandardError(const char* reason, const MessageFields& message) noexcept;

/// How many messages an appender has failed to write since the library was loaded, and how often it could not
/// roll, pack or delete a file, whether or not the failure could be reported.
namespace FailureCount {

void add() noexcept;

std::uint64_t get() noexcept;

} // namespace FailureCount

} // namespace Log
} // namespace ZAV
