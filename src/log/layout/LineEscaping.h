#pragma once

#include <string>

namespace ZAV {
namespace Log {

struct MessageFields;

/// Appends a line in the given layout, for example `appendLogLine`, with line breaks, other control
/// characters and backslashes in logger name, file and text written as `\n`, `\r`, `\t`, `\xHH` and `\\`: one
/// message is one line then, and no text can pass for a line of its own. Bytes above 127 stay as they are.
void appendEscaped(std::string& line, const MessageFields& message,
                   void (*appendLine)(std::string&, const MessageFields&));

} // namespace Log
} // namespace ZAV
