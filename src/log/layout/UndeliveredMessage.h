#pragma once

#include <string>

namespace ZAV {
namespace Log {

struct MessageFields;

/// The beginning of a line that shows a message because the process ends.
constexpr char SHOWN_AT_PROCESS_END[] = "The process ends. Log message that was not written: ";

/// The beginning of a line that shows the oldest message, discarded from a full queue.
constexpr char SHOWN_WHEN_DISCARDED[] = "Message queue size reached. Discarding oldest log message: ";

/// \return the line that shows a message; empty if there is no memory for it
std::string shownLine(const char* reason, const MessageFields& message) noexcept;

/// Writes such a line, or only the reason if it is empty, to the standard error stream, and flushes that.
void showLine(const std::string& line, const char* reason) noexcept;

/// Writes a message to the standard error stream instead of delivering it: one line, flushed. It never
/// throws; if there is no memory for the line, only the reason is written.
/// \param reason the beginning of the line
void showOnStandardError(const char* reason, const MessageFields& message) noexcept;

} // namespace Log
} // namespace ZAV
