#pragma once

#include <string>
#include <string_view>

namespace ZAV {
namespace Platform {

enum class WriteResult {
    WRITTEN,
    NO_READER, ///< the other end of the pipe is closed
    STOPPED,   ///< the text had to wait, and an end was requested meanwhile
    FAILED
};

/// Makes standard output take bytes as they are, and a closed pipe a result instead of the process's end.
/// Called once, before the first write and before a file is opened.
void prepareStandardOutput();

/// Writes all of a text to standard output, past the standard library's buffers.
/// \param problem receives the system's word for what went wrong if the result is `FAILED`
WriteResult writeStandardOutput(std::string_view text, std::string& problem);

} // namespace Platform
} // namespace ZAV
