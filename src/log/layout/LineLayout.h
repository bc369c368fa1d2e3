#pragma once

#include <string>

namespace ZAV {
namespace Log {

struct MessageFields;

/// One of the layouts below.
using AppendLine = void (*)(std::string& text, const MessageFields& message);

/// Appends the line that `formatLogLine` returns. The text is reallocated at most once, and afterwards has
/// room for a line end.
void appendLogLine(std::string& text, const MessageFields& message);

/// Appends the line that `formatLogLineWithProcess` returns. The text is reallocated at most once, and
/// afterwards has room for a line end.
void appendLogLineWithProcess(std::string& text, const MessageFields& message);

} // namespace Log
} // namespace ZAV
