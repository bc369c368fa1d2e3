#pragma once

#include "log/layout/LineLayout.h"

namespace ZAV {
namespace Log {

/// Appends a line in a layout, with line breaks, other control characters and backslashes in logger name,
/// file and text written as `\n`, `\r`, `\t`, `\xHH` and `\\`: one message is one line then, and no text can
/// pass for a line of its own. The control characters from U+0080 to U+009F and those that override or
/// isolate the direction of writing become `\u{HHHH}`; other bytes above 127 stay as they are.
void appendEscaped(std::string& line, const MessageFields& message, AppendLine appendLine);

/// Appends what an appender writes for a message: a line and its end.
/// \param isEscaped whether the message is kept on one line
inline void appendWholeLine(std::string& line, const MessageFields& message, AppendLine appendLine,
                            bool isEscaped) {
    if (isEscaped) {
        appendEscaped(line, message, appendLine);
    } else {
        appendLine(line, message);
    }
    line += '\n';
}

} // namespace Log
} // namespace ZAV
